#pragma once

#include "platform/ui/Window.h"

#import <AppKit/AppKit.h>

namespace platform::ui {

struct Window::Native {
    NSWindow* window;
    std::shared_ptr<View> contentView;
};

} // namespace platform::ui
