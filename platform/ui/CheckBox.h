#pragma once

#include "platform/ui/Control.h"

namespace platform::ui {

enum class CheckState { Mixed = -1, Off = 0, On = 1 };

class CheckBox : public Control {
public:
    explicit CheckBox(std::unique_ptr<Native> native);

    CheckState state() const;
    void setState(CheckState state); // Mixed shows even where the user cannot choose it
    void setOn(bool on) { setState(on ? CheckState::On : CheckState::Off); }
    bool isOn() const { return state() == CheckState::On; }

    std::string title() const;
    void setTitle(const std::string& title);
};

} // namespace platform::ui
