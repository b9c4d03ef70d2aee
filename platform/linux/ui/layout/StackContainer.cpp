#include "platform/linux/ui/layout/StackContainer.h"

namespace platform::ui {

StackContainer::StackContainer(QWidget* parent) : QWidget(parent) { }

void StackContainer::setLeastWidth(int width)
{
    _leastWidth = width;
    updateGeometry();
}

QSize StackContainer::sizeHint() const
{
    return QWidget::sizeHint().expandedTo({_leastWidth, 0});
}

QSize StackContainer::minimumSizeHint() const
{
    return QWidget::minimumSizeHint().expandedTo({_leastWidth, 0});
}

} // namespace platform::ui
