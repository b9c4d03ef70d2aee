#pragma once

#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/ui/View.h"

#include <memory>

namespace platform::ui {

// The view of one element by itself, without its children.
std::shared_ptr<View> makeView(const macos::Element& element);

} // namespace platform::ui
