#pragma once

#include "platform/ui/Control.h"

namespace platform::ui {

class Button : public Control {
public:
    explicit Button(std::unique_ptr<Native> native);

    std::string title() const;
    void setTitle(const std::string& title);
};

} // namespace platform::ui
