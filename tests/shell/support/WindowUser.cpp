#include "tests/shell/support/WindowUser.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextField.h"

#include <algorithm>
#include <QApplication>
#include <stdexcept>

using namespace platform::ui;

namespace {

std::logic_error complaint(std::string_view what, std::string_view about)
{
    return std::logic_error(std::string(what) + " \"" + std::string(about) + '"');
}

} // namespace

QWidget* WindowUser::window() const
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->objectName().toStdString() == _window)
            return widget;
    }
    return nullptr;
}

QWidget& WindowUser::visibleWidget(std::string_view identifier) const
{
    const auto name = QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    auto* const widget = window() ? window()->findChild<QWidget*>(name) : nullptr;
    if (!widget || !widget->isVisible())
        throw complaint("There is no such thing to be seen:", identifier);
    return *widget;
}

template <class T>
std::shared_ptr<T> WindowUser::control(std::string_view identifier) const
{
    auto view = std::dynamic_pointer_cast<T>(viewForWidget(&visibleWidget(identifier)));
    if (!view)
        throw complaint("There is no such control to be seen:", identifier);
    return view;
}

bool WindowUser::seesWindow() const
{
    return window() && window()->isVisible();
}

bool WindowUser::sees(std::string_view identifier) const
{
    const auto name = QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    const auto* const widget = window() ? window()->findChild<QWidget*>(name) : nullptr;
    return widget && widget->isVisible();
}

bool WindowUser::isOn(std::string_view checkBox) const
{
    return control<CheckBox>(checkBox)->isOn();
}

bool WindowUser::isEnabled(std::string_view identifier) const
{
    return control<Control>(identifier)->isEnabled();
}

std::string WindowUser::text(std::string_view fieldOrButton) const
{
    const auto view = control<Control>(fieldOrButton);
    if (const auto* const button = dynamic_cast<const Button*>(view.get()))
        return button->title();
    return dynamic_cast<const TextField&>(*view).stringValue();
}

int WindowUser::selectedIndex(std::string_view popUp) const
{
    return control<PopUpButton>(popUp)->indexOfSelectedItem();
}

std::vector<std::string> WindowUser::itemTitles(std::string_view popUp) const
{
    const auto button = control<PopUpButton>(popUp);
    std::vector<std::string> titles;
    for (int i = 0; i < button->numberOfItems(); ++i)
        titles.push_back(button->itemTitleAtIndex(i));
    return titles;
}

std::int64_t WindowUser::stepperValue(std::string_view stepper) const
{
    return control<Stepper>(stepper)->integerValue();
}

platform::TimeOfDay WindowUser::time(std::string_view picker) const
{
    return control<DatePicker>(picker)->timeOfDay();
}

void WindowUser::click(std::string_view identifier)
{
    user::click(*control<Control>(identifier));
}

void WindowUser::tick(std::string_view checkBox, bool on)
{
    if (isOn(checkBox) != on)
        click(checkBox);
}

void WindowUser::choose(std::string_view popUp, int index)
{
    user::choose(*control<PopUpButton>(popUp), index);
}

void WindowUser::type(std::string_view field, std::string_view text)
{
    user::type(*control<TextField>(field), text);
}

void WindowUser::replaceText(std::string_view field, std::string_view text)
{
    user::replaceText(*control<TextField>(field), text);
}

void WindowUser::press(std::string_view identifier, Key key)
{
    user::press(*control<Control>(identifier), key);
}

void WindowUser::step(std::string_view stepper, user::StepDirection direction)
{
    user::step(*control<Stepper>(stepper), direction);
}

void WindowUser::pick(std::string_view picker, platform::TimeOfDay time)
{
    user::pick(*control<DatePicker>(picker), time);
}

void WindowUser::setTime(std::string_view picker, platform::TimeOfDay time)
{
    control<DatePicker>(picker)->setTimeOfDay(time);
}

user::ShownAlert WindowUser::alert() const
{
    const auto shown = user::currentAlert();
    if (!shown)
        throw std::logic_error("No alert is on screen");
    return *shown;
}

void WindowUser::answer(std::string_view button)
{
    const auto buttons = alert().buttons;
    const auto found = std::ranges::find(buttons, button);
    if (found == buttons.end())
        throw complaint("The alert has no such button:", button);
    user::answer(static_cast<int>(found - buttons.begin()));
}

void WindowUser::dismissAlert()
{
    user::answer(static_cast<int>(alert().buttons.size()) - 1);
}

void WindowUser::closeWindow()
{
    user::closeWindow(_window);
}

void WindowUser::pressKeys(std::string_view keys)
{
    user::pressKeys(_window, keys);
}
