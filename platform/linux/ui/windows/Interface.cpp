#include "platform/ui/Interface.h"

#include "platform/linux/ui/application/HelpCommand.h"
#include "platform/linux/ui/menus/EditCommands.h"
#include "platform/linux/ui/menus/MenuItemNative.h"
#include "platform/linux/ui/menus/WindowCommands.h"
#include "platform/linux/ui/windows/LocalizeWidgets.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/linux/ui/windows/WrapNamedWidgets.h"
#include "ui_BRVCalendarIntervalViewController.h"
#include "ui_BRVConsole.h"
#include "ui_BRVIntervalViewController.h"
#include "ui_BRVLocalSnapshotsController.h"
#include "ui_BRVPreferencesController.h"
#include "ui_BRVWhenInactiveViewController.h"
#include "ui_MainWindow.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace platform::ui {

struct Interface::Native {
    std::shared_ptr<Window> window;
    std::shared_ptr<View> view;
    NamedViews views;
    std::map<std::string, std::shared_ptr<MenuItem>, std::less<>> menuItems;
};

namespace {

[[noreturn]] void fail(const char* what, std::string_view name)
{
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(name.size()), name.data());
    std::abort();
}

template <class Layout, class Top = QWidget>
std::unique_ptr<QWidget> build()
{
    auto top = std::make_unique<Top>();
    Layout().setupUi(top.get());
    return top;
}

std::unique_ptr<QWidget> build(std::string_view name)
{
    if (name == "MainWindow")
        return build<Ui::MainWindow, InterfaceWindow>();
    if (name == "BRVPreferencesController")
        return build<Ui::BRVPreferencesController, InterfaceWindow>();
    if (name == "BRVCalendarIntervalViewController")
        return build<Ui::BRVCalendarIntervalViewController>();
    if (name == "BRVConsole")
        return build<Ui::BRVConsole, InterfaceWindow>();
    if (name == "BRVIntervalViewController")
        return build<Ui::BRVIntervalViewController>();
    if (name == "BRVWhenInactiveViewController")
        return build<Ui::BRVWhenInactiveViewController>();
    if (name == "BRVLocalSnapshotsController")
        return build<Ui::BRVLocalSnapshotsController, InterfaceWindow>();
    fail("No interface of this name", name);
}

} // namespace

std::unique_ptr<Interface> Interface::load(std::string_view name)
{
    auto native = std::make_unique<Native>();
    auto top = build(name);
    localizeWidgets(*top);
    for (auto* const action : top->findChildren<QAction*>()) {
        action->setShortcutContext(Qt::ApplicationShortcut); // one menu bar serves all windows
        if (!action->objectName().isEmpty() && !action->isSeparator())
            native->menuItems.emplace(
                action->objectName().toStdString(),
                std::make_shared<MenuItem>(std::unique_ptr<MenuItem::Native>(new MenuItem::Native{action})));
    }

    if (auto* const window = qobject_cast<InterfaceWindow*>(top.get())) {
        static_cast<void>(top.release());
        new EditCommands(*window);
        new WindowCommands(*window);
        new HelpCommand(*window);
        native->views = wrapNamedWidgets(*window->centralWidget());
        auto parts = std::unique_ptr<Window::Native>(
            new Window::Native{std::unique_ptr<InterfaceWindow>(window), viewForWidget(window->centralWidget())});
        native->window = std::make_shared<Window>(std::move(parts));
    } else {
        native->views = wrapNamedWidgets(*top);
        native->view = viewForWidget(top.release());
    }
    return std::make_unique<Interface>(std::move(native));
}

Interface::Interface(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Interface::~Interface() = default;

std::shared_ptr<Window> Interface::window() const
{
    return _native->window;
}

std::shared_ptr<View> Interface::view() const
{
    return _native->view;
}

std::shared_ptr<MenuItem> Interface::menuItem(std::string_view identifier) const
{
    const auto found = _native->menuItems.find(identifier);
    if (found == _native->menuItems.end())
        failMissingOutlet(identifier);
    return found->second;
}

std::vector<std::string> Interface::identifiers() const
{
    std::vector<std::string> names;
    if (_native->window)
        names.push_back(_native->window->identifier());
    for (const auto& [name, view] : _native->views)
        names.push_back(name);
    for (const auto& [name, item] : _native->menuItems)
        names.push_back(name);
    return names;
}

std::shared_ptr<View> Interface::find(std::string_view identifier) const
{
    const auto found = _native->views.find(identifier);
    return found == _native->views.end() ? nullptr : found->second;
}

void Interface::failMissingOutlet(std::string_view identifier) const
{
    fail("Missing outlet", identifier);
}

} // namespace platform::ui
