#pragma once

#include "platform/ui/Control.h"

#include <cstdint>

namespace platform::ui {

// Its minimum, maximum and increment come from the interface file.
class Stepper : public Control {
public:
    explicit Stepper(std::unique_ptr<Native> native);

    std::int64_t integerValue() const;
    void setIntegerValue(std::int64_t value); // held in the stepper's range
};

} // namespace platform::ui
