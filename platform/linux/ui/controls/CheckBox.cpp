#include "platform/ui/CheckBox.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/Title.h"

#include <QCheckBox>

namespace platform::ui {

std::shared_ptr<CheckBox> CheckBox::create(const std::string& title)
{
    return wrapWidget<CheckBox, ControlNative>(new QCheckBox(markedTitle(title, {})));
}

std::shared_ptr<CheckBox> CheckBox::createSwitchButton(const std::string& title)
{
    auto box = create(title); // they look alike here; the property tells them apart
    widgetOf<QCheckBox>(*box).setProperty("isSwitchButton", true);
    widgetOf<QCheckBox>(*box).adjustSize();
    return box;
}

CheckBox::CheckBox(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& box = widgetOf<QCheckBox>(*this);
    auto& control = controlNative(*this);
    QObject::connect(&box, &QAbstractButton::clicked, control.receiver(), [&box, &control] {
        // Showing the mixed state makes it one that the user can choose, which lasts until the user chose another.
        box.setTristate(false);
        control.sendAction();
    });
}

CheckState CheckBox::state() const
{
    switch (widgetOf<QCheckBox>(*this).checkState()) {
    case Qt::Checked:
        return CheckState::On;
    case Qt::PartiallyChecked:
        return CheckState::Mixed;
    case Qt::Unchecked:
        break;
    }
    return CheckState::Off;
}

void CheckBox::setState(CheckState state)
{
    auto& box = widgetOf<QCheckBox>(*this);
    box.setTristate(state == CheckState::Mixed);
    switch (state) {
    case CheckState::Mixed:
        return box.setCheckState(Qt::PartiallyChecked);
    case CheckState::On:
        return box.setCheckState(Qt::Checked);
    case CheckState::Off:
        return box.setCheckState(Qt::Unchecked);
    }
}

std::string CheckBox::title() const
{
    return plainTitle(widgetOf<QCheckBox>(*this).text());
}

void CheckBox::setTitle(const std::string& title)
{
    auto& box = widgetOf<QCheckBox>(*this);
    box.setText(markedTitle(title, box.text()));
}

} // namespace platform::ui
