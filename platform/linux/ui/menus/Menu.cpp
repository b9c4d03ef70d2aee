#include "platform/ui/Menu.h"

#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/menus/MenuItemBinding.h"
#include "platform/linux/ui/menus/MenuItemNative.h"

#include <QKeySequence>
#include <QMenu>

namespace platform::ui {

MenuItem::MenuItem(std::unique_ptr<Native> native) : _native(std::move(native)) { }

MenuItem::~MenuItem() = default;

std::string MenuItem::identifier() const
{
    return _native->action->objectName().toStdString();
}

std::string MenuItem::title() const
{
    return plainTitle(_native->action->text());
}

bool MenuItem::isHidden() const
{
    return !_native->action->isVisible();
}

void MenuItem::setHidden(bool hidden)
{
    _native->action->setVisible(!hidden);
}

std::string MenuItem::keyEquivalent() const
{
    const auto keys = _native->action->shortcut();
    if (keys.isEmpty() || !(keys[0].keyboardModifiers() & Qt::ControlModifier))
        return {};
    const QString key = QChar(static_cast<char16_t>(keys[0].key()));
    return (keys[0].keyboardModifiers() & Qt::ShiftModifier ? key : key.toLower()).toStdString();
}

void MenuItem::setKeyEquivalent(const std::string& key)
{
    const auto character = QString::fromStdString(key);
    if (character.isEmpty())
        return _native->action->setShortcut({});
    const auto shift = character[0].isUpper() ? Qt::ShiftModifier : Qt::NoModifier;
    _native->action->setShortcut(
        QKeyCombination(Qt::ControlModifier | shift, static_cast<Qt::Key>(character[0].toUpper().unicode())));
}

std::shared_ptr<MenuItem> MenuItem::next() const
{
    const auto* const menu = menuOf(*_native->action);
    const auto actions = menu ? menu->actions() : QList<QAction*>();
    const auto following = actions.indexOf(_native->action.data()) + 1;
    if (following == 0 || following == actions.size())
        return nullptr;
    return std::make_shared<MenuItem>(std::unique_ptr<Native>(new Native{actions[following]}));
}

void MenuItem::setAction(Action action)
{
    MenuItemBinding::of(*_native->action).perform = std::move(action);
}

void MenuItem::setValidator(std::function<bool()> isEnabled)
{
    MenuItemBinding::of(*_native->action).validator = std::move(isEnabled);
}

bool MenuItem::isEnabled() const
{
    return MenuItemBinding::of(*_native->action).isEnabled();
}

} // namespace platform::ui
