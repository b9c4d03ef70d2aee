#pragma once

#import <AppKit/AppKit.h>

// Asks whether the user's edit may be made: the range in UTF-16 units, and what replaces it.
typedef BOOL (^BRVEditJudge)(NSRange range, NSString* replacement);

// A text field whose edits are judged before they are made.
@interface BRVEntryField : NSTextField
@property (copy) BRVEditJudge judge;
@end
