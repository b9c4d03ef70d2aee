#include "platform/ui/Control.h"

#include "platform/linux/ui/controls/ControlNative.h"

namespace platform::ui {

bool Control::isEnabled() const
{
    const auto* const widget = native().as<QWidget>();
    return widget ? widget->isEnabled() : native().enabled;
}

void Control::setEnabled(bool enabled)
{
    native().enabled = enabled;
    if (auto* const widget = native().as<QWidget>())
        widget->setEnabled(enabled);
}

ControlSize Control::controlSize() const
{
    return controlNative(*this).size;
}

// A theme has one size for each control; a large one is higher, and so easier to hit.
void Control::setControlSize(ControlSize size)
{
    controlNative(*this).size = size;
    const bool isLarge = size == ControlSize::Large;
    if (auto* const widget = isLarge ? realizedWidget(*this) : native().widget.data())
        widget->setMinimumHeight(isLarge ? widget->sizeHint().height() * 4 / 3 : 0);
}

void Control::setAction(Action action)
{
    controlNative(*this).action = std::move(action);
}

} // namespace platform::ui
