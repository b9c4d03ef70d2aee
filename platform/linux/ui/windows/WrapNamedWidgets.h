#pragma once

#include "platform/linux/ui/controls/ViewNative.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace platform::ui {

using NamedViews = std::map<std::string, std::shared_ptr<View>, std::less<>>;

// A view for each widget that the interface file names, of the class that the widget's own class stands for. The top
// widget has one in any case.
NamedViews wrapNamedWidgets(QWidget& top);

} // namespace platform::ui
