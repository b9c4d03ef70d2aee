#include "tests/shell/support/MainWindowUser.h"

#include "platform/linux/ui/MenuItemNative.h"
#include "platform/linux/ui/ViewNative.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextField.h"

#include <algorithm>
#include <QApplication>
#include <QMainWindow>
#include <stdexcept>

using namespace platform::ui;

namespace {

std::logic_error complaint(std::string_view what, std::string_view about)
{
    return std::logic_error(std::string(what) + " \"" + std::string(about) + '"');
}

QMainWindow* mainWindow()
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<QMainWindow*>(widget))
            return window;
    }
    return nullptr;
}

QString qtName(std::string_view identifier)
{
    return QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
}

QWidget* findWidget(std::string_view identifier)
{
    const auto* const window = mainWindow();
    auto* const widget = window ? window->findChild<QWidget*>(qtName(identifier)) : nullptr;
    return widget && widget->isVisible() ? widget : nullptr;
}

template <class T>
std::shared_ptr<T> control(std::string_view identifier)
{
    auto view = std::dynamic_pointer_cast<T>(viewForWidget(findWidget(identifier)));
    if (!view)
        throw complaint("There is no such control to be seen:", identifier);
    return view;
}

} // namespace

bool MainWindowUser::seesWindow() const
{
    return mainWindow() && mainWindow()->isVisible();
}

bool MainWindowUser::sees(std::string_view identifier) const
{
    return findWidget(identifier) != nullptr;
}

std::vector<std::string> MainWindowUser::rows() const
{
    QWidgetList widgets;
    for (auto* const widget : findWidget("stackView")->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (widget->isVisible())
            widgets += widget;
    }
    std::ranges::stable_sort(widgets, {}, [](const QWidget* widget) { return widget->y(); });
    std::vector<std::string> names;
    for (const auto* const widget : widgets)
        names.push_back(widget->objectName().toStdString());
    return names;
}

bool MainWindowUser::isOn(std::string_view checkBox) const
{
    return control<CheckBox>(checkBox)->isOn();
}

bool MainWindowUser::isEnabled(std::string_view identifier) const
{
    return control<Control>(identifier)->isEnabled();
}

std::string MainWindowUser::text(std::string_view fieldOrButton) const
{
    const auto view = control<Control>(fieldOrButton);
    if (const auto* const button = dynamic_cast<const Button*>(view.get()))
        return button->title();
    return dynamic_cast<const TextField&>(*view).stringValue();
}

int MainWindowUser::selectedIndex(std::string_view popUp) const
{
    return control<PopUpButton>(popUp)->indexOfSelectedItem();
}

std::vector<std::string> MainWindowUser::itemTitles(std::string_view popUp) const
{
    const auto button = control<PopUpButton>(popUp);
    std::vector<std::string> titles;
    for (int i = 0; i < button->numberOfItems(); ++i)
        titles.push_back(button->itemTitleAtIndex(i));
    return titles;
}

std::int64_t MainWindowUser::stepperValue(std::string_view stepper) const
{
    return control<Stepper>(stepper)->integerValue();
}

TimeOfDay MainWindowUser::time(std::string_view picker) const
{
    return control<DatePicker>(picker)->timeOfDay();
}

void MainWindowUser::click(std::string_view identifier)
{
    user::click(*control<Control>(identifier));
}

void MainWindowUser::tick(std::string_view checkBox, bool on)
{
    if (isOn(checkBox) != on)
        click(checkBox);
}

void MainWindowUser::choose(std::string_view popUp, int index)
{
    user::choose(*control<PopUpButton>(popUp), index);
}

void MainWindowUser::type(std::string_view field, std::string_view text)
{
    user::type(*control<TextField>(field), text);
}

void MainWindowUser::replaceText(std::string_view field, std::string_view text)
{
    user::replaceText(*control<TextField>(field), text);
}

void MainWindowUser::press(std::string_view identifier, Key key)
{
    user::press(*control<Control>(identifier), key);
}

void MainWindowUser::step(std::string_view stepper, user::StepDirection direction)
{
    user::step(*control<Stepper>(stepper), direction);
}

void MainWindowUser::pick(std::string_view picker, TimeOfDay time)
{
    user::pick(*control<DatePicker>(picker), time);
}

void MainWindowUser::setTime(std::string_view picker, TimeOfDay time)
{
    control<DatePicker>(picker)->setTimeOfDay(time);
}

std::shared_ptr<MenuItem> MainWindowUser::menuItem(std::string_view identifier) const
{
    auto* const action = mainWindow() ? mainWindow()->findChild<QAction*>(qtName(identifier)) : nullptr;
    if (!action)
        throw complaint("There is no such menu item:", identifier);
    return std::make_shared<MenuItem>(std::make_unique<MenuItem::Native>(action));
}

void MainWindowUser::clickMenuItem(std::string_view identifier)
{
    user::click(*menuItem(identifier));
}

user::ShownAlert MainWindowUser::alert() const
{
    const auto shown = user::currentAlert();
    if (!shown)
        throw std::logic_error("No alert is on screen");
    return *shown;
}

void MainWindowUser::answer(std::string_view button)
{
    const auto buttons = alert().buttons;
    const auto found = std::ranges::find(buttons, button);
    if (found == buttons.end())
        throw complaint("The alert has no such button:", button);
    user::answer(static_cast<int>(found - buttons.begin()));
}

void MainWindowUser::dismissAlert()
{
    user::answer(static_cast<int>(alert().buttons.size()) - 1);
}

void MainWindowUser::closeWindow()
{
    user::closeWindow("mainWindow");
}
