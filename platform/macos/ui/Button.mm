#include "platform/ui/Button.h"

#include "platform/macos/ui/ControlNative.h"

namespace platform::ui {

Button::Button(std::unique_ptr<Native> native) : Control(std::move(native)) { }

std::string Button::title() const
{
    return foundation::string(nativeOf<NSButton>(*this).title);
}

void Button::setTitle(const std::string& title)
{
    nativeOf<NSButton>(*this).title = foundation::string(title);
}

} // namespace platform::ui
