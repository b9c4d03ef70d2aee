#include "platform/ui/CheckBox.h"

#include "platform/macos/ui/ControlNative.h"

namespace platform::ui {

std::shared_ptr<CheckBox> CheckBox::create(const std::string& title)
{
    if (@available(macOS 10.12, *))
        return wrapView<CheckBox, ControlNative>([NSButton checkboxWithTitle:foundation::string(title)
                                                                      target:nil
                                                                      action:nil]);
    return createSwitchButton(title);
}

std::shared_ptr<CheckBox> CheckBox::createSwitchButton(const std::string& title)
{
    NSButton* const button = [[NSButton alloc] initWithFrame:NSZeroRect];
    [button setButtonType:NSButtonTypeSwitch];
    button.title = foundation::string(title);
    button.font = [NSFont controlContentFontOfSize:NSFont.systemFontSize];
    [button sizeToFit];
    return wrapView<CheckBox, ControlNative>(button);
}

CheckBox::CheckBox(std::unique_ptr<Native> native) : Control(std::move(native)) { }

CheckState CheckBox::state() const
{
    switch (nativeOf<NSButton>(*this).state) {
    case NSControlStateValueOn:
        return CheckState::On;
    case NSControlStateValueMixed:
        return CheckState::Mixed;
    default:
        return CheckState::Off;
    }
}

void CheckBox::setState(CheckState state)
{
    NSButton* const button = nativeOf<NSButton>(*this);
    button.allowsMixedState = state == CheckState::Mixed;
    button.state = static_cast<NSControlStateValue>(state);
}

std::string CheckBox::title() const
{
    return foundation::string(nativeOf<NSButton>(*this).title);
}

void CheckBox::setTitle(const std::string& title)
{
    nativeOf<NSButton>(*this).title = foundation::string(title);
}

} // namespace platform::ui
