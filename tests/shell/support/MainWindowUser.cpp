#include "tests/shell/support/MainWindowUser.h"

#include "platform/linux/ui/menus/MenuItemNative.h"

#include <algorithm>
#include <QWidget>
#include <stdexcept>

using namespace platform::ui;

std::vector<std::string> MainWindowUser::rows() const
{
    QWidgetList widgets;
    for (auto* const widget : visibleWidget("stackView").findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (widget->isVisible())
            widgets += widget;
    }
    std::ranges::stable_sort(widgets, {}, [](const QWidget* widget) { return widget->y(); });
    std::vector<std::string> names;
    for (const auto* const widget : widgets)
        names.push_back(widget->objectName().toStdString());
    return names;
}

std::shared_ptr<MenuItem> MainWindowUser::menuItem(std::string_view identifier) const
{
    const auto name = QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    auto* const action = window() ? window()->findChild<QAction*>(name) : nullptr;
    if (!action)
        throw std::logic_error("There is no such menu item: " + std::string(identifier));
    return std::make_shared<MenuItem>(std::make_unique<MenuItem::Native>(action));
}

void MainWindowUser::clickMenuItem(std::string_view identifier)
{
    user::click(*menuItem(identifier));
}
