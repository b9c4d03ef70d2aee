#include "platform/ui/Interface.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/menus/MenuBar.h"
#include "platform/linux/ui/windows/LocalizeWidgets.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/linux/ui/windows/WrapNamedWidgets.h"
#include "ui_BRVActivityController.h"
#include "ui_BRVBackupProgramController.h"
#include "ui_BRVCalendarIntervalViewController.h"
#include "ui_BRVConsole.h"
#include "ui_BRVFirstStartController.h"
#include "ui_BRVIntervalViewController.h"
#include "ui_BRVLocalSnapshotsController.h"
#include "ui_BRVPreferencesController.h"
#include "ui_BRVWhenInactiveViewController.h"
#include "ui_MainWindow.h"

#include <memory>
#include <utility>

namespace platform::ui {

namespace {

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
    if (name == "BRVActivityController")
        return build<Ui::BRVActivityController, InterfaceWindow>();
    if (name == "BRVBackupProgramController")
        return build<Ui::BRVBackupProgramController, InterfaceWindow>();
    if (name == "BRVFirstStartController")
        return build<Ui::BRVFirstStartController, InterfaceWindow>();
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
    Interface::fail("No interface of this name", name);
}

} // namespace

std::unique_ptr<Interface> Interface::load(std::string_view name, const MenuBarDescription& menus)
{
    auto top = build(name);
    localizeWidgets(*top);
    Contents contents;
    if (auto* const window = qobject_cast<InterfaceWindow*>(top.get())) {
        static_cast<void>(top.release());
        Window::Native parts{std::unique_ptr<InterfaceWindow>(window), nullptr};
        if (!menus.empty())
            contents.menuItems = addMenuBar(*window, menus);
        contents.views = wrapNamedWidgets(*window->centralWidget());
        parts.contentView = viewForWidget(window->centralWidget());
        contents.window = std::make_shared<Window>(std::make_unique<Window::Native>(std::move(parts)));
    } else {
        contents.views = wrapNamedWidgets(*top);
        contents.view = viewForWidget(top.release());
    }
    return std::make_unique<Interface>(std::move(contents));
}

} // namespace platform::ui
