#pragma once

#include "platform/ui/Interface.h"

class QWidget;

namespace platform::ui {

// A view for each widget that the interface file names, of the class that the widget's own class stands for. The top
// widget has one in any case.
NamedViews wrapNamedWidgets(QWidget& top);

} // namespace platform::ui
