#include "platform/linux/ui/StackContainer.h"

namespace platform::ui {

StackContainer::StackContainer(QWidget* parent) : QWidget(parent) { }

} // namespace platform::ui
