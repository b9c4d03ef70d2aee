#include "platform/linux/ui/windows/LocalizeWidgets.h"

#include "platform/Localization.h"

#include <array>
#include <QComboBox>
#include <QLayout>
#include <QMetaProperty>
#include <QWidget>

namespace platform::ui {

namespace {

constexpr std::array TextProperties{
    "text",   "title",   "windowTitle",    "placeholderText",       "prefix",
    "suffix", "toolTip", "accessibleName", "accessibleDescription", "statusTip",
};

QString localized(const QString& text)
{
    return QString::fromStdString(localizedString(text.toStdString()));
}

void localizeProperty(QObject& object, const char* name)
{
    const auto text = object.property(name).toString();
    if (!text.isEmpty())
        object.setProperty(name, localized(text));
}

void localizeWidget(QWidget& widget)
{
    for (const char* const name : TextProperties) {
        if (widget.metaObject()->indexOfProperty(name) >= 0)
            localizeProperty(widget, name);
    }
    if (auto* const box = qobject_cast<QComboBox*>(&widget)) {
        for (int i = 0; i < box->count(); ++i)
            box->setItemText(i, localized(box->itemText(i)));
    }
}

void mirrorMargins(QLayout& layout)
{
    const auto margins = layout.contentsMargins();
    layout.setContentsMargins(margins.right(), margins.top(), margins.left(), margins.bottom());
}

} // namespace

void localizeWidgets(QWidget& top)
{
    localizeWidget(top);
    for (auto* const widget : top.findChildren<QWidget*>())
        localizeWidget(*widget);
    if (top.isRightToLeft()) {
        for (auto* const layout : top.findChildren<QLayout*>())
            mirrorMargins(*layout);
    }
}

} // namespace platform::ui
