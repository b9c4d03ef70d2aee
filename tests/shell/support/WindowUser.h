#pragma once

#include "platform/ui/DatePicker.h"
#include "tests/platform/ui/User.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class QWidget;

using user::Key;

// A person in front of one of the application's windows, who knows its controls by their identifiers. Throws
// std::logic_error for what is not there to be seen or used.
class WindowUser {
public:
    explicit WindowUser(std::string window) : _window(std::move(window)) { }

    // Whether the window, and a control in it, is on screen.
    bool seesWindow() const;
    bool sees(std::string_view identifier) const;

    bool isOn(std::string_view checkBox) const;
    bool isEnabled(std::string_view control) const;
    std::string text(std::string_view fieldOrButton) const;
    int selectedIndex(std::string_view popUp) const;
    std::vector<std::string> itemTitles(std::string_view popUp) const;
    std::int64_t stepperValue(std::string_view stepper) const;
    platform::TimeOfDay time(std::string_view picker) const;

    void click(std::string_view control);
    void tick(std::string_view checkBox, bool on); // clicks it if it is not so already
    void choose(std::string_view popUp, int index);
    void type(std::string_view field, std::string_view text);
    void replaceText(std::string_view field, std::string_view text);
    void press(std::string_view control, Key key);
    void step(std::string_view stepper, user::StepDirection direction);
    void pick(std::string_view picker, platform::TimeOfDay time);
    void setTime(std::string_view picker, platform::TimeOfDay time); // at once, without the keys on the way

    // The one alert on screen. By its button's title, or its last button.
    user::ShownAlert alert() const;
    void answer(std::string_view button);
    void dismissAlert();
    void closeWindow();
    // Keys with modifiers, such as "Ctrl+W".
    void pressKeys(std::string_view keys);

protected:
    QWidget* window() const; // null when there is none, on screen or not
    QWidget& visibleWidget(std::string_view identifier) const;

private:
    template <class T>
    std::shared_ptr<T> control(std::string_view identifier) const;

    std::string _window;
};
