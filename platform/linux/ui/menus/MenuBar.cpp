#include "platform/linux/ui/menus/MenuBar.h"

#include "platform/linux/ui/application/HelpPage.h"
#include "platform/linux/ui/menus/EditCommands.h"
#include "platform/linux/ui/menus/MenuItemNative.h"
#include "platform/linux/ui/menus/WindowCommands.h"
#include "platform/Localization.h"

#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace platform::ui {

namespace {

QString localized(const std::string& text)
{
    return QString::fromStdString(localizedString(text));
}

QKeySequence keysOf(const MenuItemDescription& item)
{
    if (item.command == MenuCommand::ShowHelp)
        return QKeySequence::HelpContents;
    if (item.key.empty())
        return {};
    const auto key = static_cast<Qt::Key>(QString::fromStdString(item.key)[0].toUpper().unicode());
    switch (item.modifiers) {
    case KeyModifiers::CommandShift:
        return Qt::ControlModifier | Qt::ShiftModifier | key;
    case KeyModifiers::CommandOption:
        return Qt::ControlModifier | Qt::AltModifier | key;
    case KeyModifiers::Command:
        break;
    }
    return Qt::ControlModifier | key;
}

class MenuBarBuilder {
public:
    explicit MenuBarBuilder(InterfaceWindow& window)
        : _window(window),
          _editCommands(*new EditCommands(window)),
          _windowCommands(*new WindowCommands(window))
    {
    }

    NamedMenuItems build(const MenuBarDescription& menus)
    {
        _window.menuBar()->setObjectName(QStringLiteral("menuBar"));
        for (const auto& menu : menus)
            addMenu(menu);
        return std::move(_items);
    }

private:
    void addMenu(const MenuDescription& description)
    {
        auto& menu = *_window.menuBar()->addMenu(localized(description.title));
        menu.setObjectName(QString::fromStdString(description.identifier));
        for (const auto& group : description.groups) {
            if (!menu.isEmpty())
                menu.addSeparator();
            for (const auto& item : group)
                addItem(menu, item);
        }
    }

    void addItem(QMenu& menu, const MenuItemDescription& description)
    {
        // The window's, so that an action is found below it whatever holds the menu.
        auto& action = *new QAction(localized(description.title), &_window);
        action.setObjectName(QString::fromStdString(description.identifier));
        action.setShortcut(keysOf(description));
        action.setShortcutContext(Qt::ApplicationShortcut); // one menu bar serves all windows
        menu.addAction(&action);
        connectCommand(action, description.command);
        auto native = std::unique_ptr<MenuItem::Native>(new MenuItem::Native{&action});
        _items.emplace(description.identifier, std::make_shared<MenuItem>(std::move(native)));
    }

    // The commands for which the toolkit has nothing are of another convention.
    void connectCommand(QAction& action, MenuCommand command)
    {
        switch (command) {
        case MenuCommand::Undo:
        case MenuCommand::Redo:
        case MenuCommand::Cut:
        case MenuCommand::Copy:
        case MenuCommand::Paste:
        case MenuCommand::SelectAll:
            _editCommands.connectAction(action, command);
            break;
        case MenuCommand::Minimize:
        case MenuCommand::Close:
        case MenuCommand::BringAllToFront:
            _windowCommands.connectAction(action, command);
            break;
        case MenuCommand::ShowHelp:
            QObject::connect(&action, &QAction::triggered, &_window, openHelp);
            break;
        default:
            break;
        }
    }

    InterfaceWindow& _window;
    EditCommands& _editCommands;     // the window's
    WindowCommands& _windowCommands; // likewise
    NamedMenuItems _items;
};

} // namespace

MenuConvention menuConvention()
{
    return MenuConvention::WindowMenus;
}

NamedMenuItems addMenuBar(InterfaceWindow& window, const MenuBarDescription& menus)
{
    return MenuBarBuilder(window).build(menus);
}

} // namespace platform::ui
