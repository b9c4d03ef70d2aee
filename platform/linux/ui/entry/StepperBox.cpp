#include "platform/linux/ui/entry/StepperBox.h"

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
    option.direction = Qt::LeftToRight;
    const auto arrow = style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, this);
    // The arrows and the frame's left edge, where the field's begins otherwise.
    return {field.width() - arrow.left() + 1, field.height()};
}

} // namespace platform::ui
