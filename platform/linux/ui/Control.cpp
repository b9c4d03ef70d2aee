#include "platform/ui/Control.h"

#include "platform/linux/ui/ControlNative.h"

namespace platform::ui {

bool Control::isEnabled() const
{
    return widgetOf<QWidget>(*this).isEnabled();
}

void Control::setEnabled(bool enabled)
{
    widgetOf<QWidget>(*this).setEnabled(enabled);
}

void Control::setAction(Action action)
{
    controlNative(*this).action = std::move(action);
}

} // namespace platform::ui
