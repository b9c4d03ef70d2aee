#pragma once

#include "platform/ui/DatePicker.h"
#include "platform/ui/Menu.h"
#include "tests/platform/ui/User.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using user::Key;

// A person in front of the main window, who knows its controls by their identifiers. Throws std::logic_error for what
// is not there to be seen or used.
class MainWindowUser {
public:
    // Whether the main window, and a control in it, is on screen.
    bool seesWindow() const;
    bool sees(std::string_view identifier) const;
    // The direct rows of the stack view, from top to bottom.
    std::vector<std::string> rows() const;

    bool isOn(std::string_view checkBox) const;
    bool isEnabled(std::string_view control) const;
    std::string text(std::string_view fieldOrButton) const;
    int selectedIndex(std::string_view popUp) const;
    std::vector<std::string> itemTitles(std::string_view popUp) const;
    std::int64_t stepperValue(std::string_view stepper) const;
    platform::ui::TimeOfDay time(std::string_view picker) const;

    void click(std::string_view control);
    void tick(std::string_view checkBox, bool on); // clicks it if it is not so already
    void choose(std::string_view popUp, int index);
    void type(std::string_view field, std::string_view text);
    void replaceText(std::string_view field, std::string_view text);
    void press(std::string_view control, Key key);
    void step(std::string_view stepper, user::StepDirection direction);
    void pick(std::string_view picker, platform::ui::TimeOfDay time);
    void setTime(std::string_view picker, platform::ui::TimeOfDay time); // at once, without the keys on the way

    std::shared_ptr<platform::ui::MenuItem> menuItem(std::string_view identifier) const;
    void clickMenuItem(std::string_view identifier);

    // The one alert on screen. By its button's title, or its last button.
    user::ShownAlert alert() const;
    void answer(std::string_view button);
    void dismissAlert();
    void closeWindow();
};
