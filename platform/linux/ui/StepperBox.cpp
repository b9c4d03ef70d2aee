#include "platform/linux/ui/StepperBox.h"

#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>

namespace platform::ui {

StepperBox::StepperBox(QWidget* parent) : QSpinBox(parent)
{
    lineEdit()->setReadOnly(true); // keys step, digits belong to the other control
    lineEdit()->hide();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize StepperBox::sizeHint() const
{
    const auto field = QSpinBox::sizeHint();
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    option.rect = QRect(QPoint(0, 0), field);
    const auto text = style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, this);
    // What is left without the field, and the frame again on the side where the field was.
    const auto frame = style()->pixelMetric(QStyle::PM_SpinBoxFrameWidth, &option, this);
    return {field.width() - text.width() + frame, field.height()};
}

} // namespace platform::ui
