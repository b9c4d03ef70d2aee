#pragma once

#include "platform/ui/Menu.h"

#import <AppKit/AppKit.h>

// What an item does and whether it may; the item's represented object, so that it lives as long as the item.
@interface BRVMenuItemTarget : NSObject
@property (copy, readonly) NSString* identifier;
- (instancetype)initWithIdentifier:(NSString*)identifier;
- (void)setAction:(const platform::ui::MenuItem::Action&)action;
- (void)setValidator:(const std::function<bool()>&)validator;
- (BOOL)isEnabled;
- (void)performAction:(id)sender;
@end

namespace platform::ui {

struct MenuItem::Native {
    NSMenuItem* item;
};

// The item's own target, made when it has none yet.
BRVMenuItemTarget* targetOf(NSMenuItem* item, NSString* identifier = @"");

} // namespace platform::ui
