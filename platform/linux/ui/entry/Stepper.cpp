#include "platform/ui/Stepper.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/entry/StepperBox.h"

#include <algorithm>
#include <QSignalBlocker>

namespace platform::ui {

Stepper::Stepper(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& control = controlNative(*this);
    QObject::connect(&widgetOf<StepperBox>(*this), &QSpinBox::valueChanged, control.receiver(),
                     [&control] { control.sendAction(); });
}

std::int64_t Stepper::integerValue() const
{
    return widgetOf<StepperBox>(*this).value();
}

void Stepper::setIntegerValue(std::int64_t value)
{
    auto& box = widgetOf<StepperBox>(*this);
    const QSignalBlocker quietly(box);
    box.setValue(static_cast<int>(std::clamp<std::int64_t>(value, box.minimum(), box.maximum())));
}

} // namespace platform::ui
