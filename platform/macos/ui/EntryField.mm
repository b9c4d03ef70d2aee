#include "platform/macos/ui/EntryField.h"

@implementation BRVEntryField

// The field editor asks its delegate, which is the field.
- (BOOL)textView:(NSTextView*)__unused textView
    shouldChangeTextInRange:(NSRange)range
          replacementString:(NSString*)replacement
{
    // Without a text only attributes change.
    return !replacement || !self.judge || self.judge(range, replacement);
}

@end
