#pragma once

#include "platform/linux/ui/windows/InterfaceWindow.h"
#include "platform/ui/Window.h"

#include <memory>

namespace platform::ui {

struct Window::Native {
    std::unique_ptr<InterfaceWindow> window;
    std::shared_ptr<View> contentView;
};

} // namespace platform::ui
