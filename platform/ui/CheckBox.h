#pragma once

#include "platform/ui/Control.h"

namespace platform::ui {

enum class CheckState { Mixed = -1, Off = 0, On = 1 };

class CheckBox : public Control {
public:
    // New ones in no view, off and without an action. The platform's standard check box; and, for systems before macOS
    // 10.12, a plain button of the switch type in the control-content font, sized to fit.
    static std::shared_ptr<CheckBox> create(const std::string& title);
    static std::shared_ptr<CheckBox> createSwitchButton(const std::string& title);

    explicit CheckBox(std::unique_ptr<Native> native);

    CheckState state() const;
    void setState(CheckState state); // Mixed shows even where the user cannot choose it
    void setOn(bool on) { setState(on ? CheckState::On : CheckState::Off); }
    bool isOn() const { return state() == CheckState::On; }

    std::string title() const;
    void setTitle(const std::string& title);
};

} // namespace platform::ui
