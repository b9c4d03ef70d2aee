#include "platform/ui/PopUpButton.h"

#include "platform/linux/ui/ControlNative.h"

#include <QComboBox>

namespace platform::ui {

PopUpButton::PopUpButton(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& control = controlNative(*this);
    auto& box = widgetOf<QComboBox>(*this);
    QObject::connect(&box, &QComboBox::activated, &control.receiver, [&control] { control.sendAction(); });
    // The toolkit tells assistive tools the value in place of the name.
    if (box.accessibleDescription().isEmpty())
        box.setAccessibleDescription(box.accessibleName());
}

int PopUpButton::numberOfItems() const
{
    return widgetOf<QComboBox>(*this).count();
}

int PopUpButton::indexOfSelectedItem() const
{
    return widgetOf<QComboBox>(*this).currentIndex();
}

void PopUpButton::selectItemAtIndex(int index)
{
    auto& box = widgetOf<QComboBox>(*this);
    box.setCurrentIndex(index >= 0 && index < box.count() ? index : -1);
}

std::string PopUpButton::itemTitleAtIndex(int index) const
{
    return widgetOf<QComboBox>(*this).itemText(index).toStdString();
}

void PopUpButton::setItemTitleAtIndex(int index, const std::string& title)
{
    widgetOf<QComboBox>(*this).setItemText(index, qtString(title));
}

} // namespace platform::ui
