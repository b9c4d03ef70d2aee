#pragma once

#include "platform/ui/ButtonCell.h"

#import <AppKit/AppKit.h>
#include <memory>

// A button cell without a border whose title a portable cell draws.
@interface BRVButtonCell : NSButtonCell
- (instancetype)initWithCell:(std::shared_ptr<const platform::ui::ButtonCell>)cell;
@end
