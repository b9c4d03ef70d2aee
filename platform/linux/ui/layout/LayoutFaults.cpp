#include "platform/ui/LayoutFaults.h"

#include "platform/linux/ui/controls/ViewNative.h"

#include <QAbstractButton>
#include <QLabel>

namespace platform::ui {

namespace {

// Of a control that shows one line, as wide as its text needs. A single sign is no text.
bool isOfOneLine(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget))
        return !label->wordWrap();
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    return button && button->text().size() > 1;
}

} // namespace

// The solver leaves no place open: of what the constraints do not decide the last view takes the rest.
std::vector<std::string> layoutFaults(const std::shared_ptr<View>& view)
{
    std::vector<std::string> faults;
    const QWidget* const top = view->native().widget;
    for (const auto* const widget : top->findChildren<QWidget*>()) {
        if (!widget->objectName().isEmpty() && isOfOneLine(*widget) && widget->isVisibleTo(top)
            && widget->width() < widget->minimumSizeHint().width())
            faults.push_back(widget->objectName().toStdString() + " cuts its text off");
    }
    return faults;
}

} // namespace platform::ui
