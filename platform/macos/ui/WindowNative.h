#pragma once

#include "platform/ui/Window.h"

#import <AppKit/AppKit.h>

namespace platform::ui {

struct Window::Native {
    NSWindow* window;
    std::shared_ptr<View> contentView;
    id undo = nil; // what the window's undo manager calls, which does not keep it
    id closeObserver = nil;
};

} // namespace platform::ui
