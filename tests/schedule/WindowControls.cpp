#include "tests/schedule/WindowControls.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/PopUpButton.h"

#include <QApplication>

using namespace platform::ui;

namespace {

View& viewOnScreen(std::string_view identifier)
{
    for (auto* const widget : QApplication::allWidgets()) {
        if (widget->objectName() == qtString(identifier) && widget->isVisible())
            return *viewForWidget(widget);
    }
    throw std::logic_error("There is no such control to be seen: " + std::string(identifier));
}

} // namespace

void selectNothing(std::string_view popUp)
{
    dynamic_cast<PopUpButton&>(viewOnScreen(popUp)).selectItemAtIndex(-1);
}

void makeMixed(std::string_view checkBox)
{
    dynamic_cast<CheckBox&>(viewOnScreen(checkBox)).setState(CheckState::Mixed);
}

std::shared_ptr<TextField> textFieldOnScreen(std::string_view identifier)
{
    return std::dynamic_pointer_cast<TextField>(viewOnScreen(identifier).shared_from_this());
}

Rect frameOf(std::string_view control)
{
    return viewOnScreen(control).frame();
}
