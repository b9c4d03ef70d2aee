#include "platform/ui/Stepper.h"

#include "platform/macos/ui/ControlNative.h"

#include <algorithm>
#include <cmath>

namespace platform::ui {

Stepper::Stepper(std::unique_ptr<Native> native) : Control(std::move(native)) { }

std::int64_t Stepper::integerValue() const
{
    return std::llround(nativeOf<NSStepper>(*this).doubleValue);
}

void Stepper::setIntegerValue(std::int64_t value)
{
    NSStepper* const stepper = nativeOf<NSStepper>(*this);
    stepper.doubleValue = std::clamp(static_cast<double>(value), stepper.minValue, stepper.maxValue);
}

} // namespace platform::ui
