#include "platform/ui/Button.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/controls/TitleButton.h"

#include <QPushButton>

namespace platform::ui {

std::shared_ptr<Button> Button::create(const std::string& title, std::shared_ptr<const ButtonCell> cell)
{
    auto button = wrapWidget<Button, ControlNative>(new TitleButton(std::move(cell)));
    button->setTitle(title);
    return button;
}

Button::Button(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& control = controlNative(*this);
    QObject::connect(&widgetOf<QPushButton>(*this), &QAbstractButton::clicked, control.receiver(),
                     [&control] { control.sendAction(); });
}

std::string Button::title() const
{
    return plainTitle(widgetOf<QPushButton>(*this).text());
}

void Button::setTitle(const std::string& title)
{
    auto& button = widgetOf<QPushButton>(*this);
    button.setText(markedTitle(title, button.text()));
}

} // namespace platform::ui
