#include "platform/ui/Button.h"

#include "platform/macos/ui/ButtonCell.h"
#include "platform/macos/ui/ControlNative.h"

namespace platform::ui {

std::shared_ptr<Button> Button::create(const std::string& title, std::shared_ptr<const ButtonCell> cell)
{
    NSButton* const native = [[NSButton alloc] initWithFrame:NSZeroRect];
    native.cell = [[BRVButtonCell alloc] initWithCell:std::move(cell)];
    native.title = foundation::string(title);
    [native sizeToFit];
    return wrapView<Button, ControlNative>(native);
}

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
