#pragma once

#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/ui/Interface.h"

#import <AppKit/AppKit.h>
#include <memory>

namespace platform::ui {

// Makes a description's views, with the constraints between them. Those with an identifier are added to `views`.
std::shared_ptr<View> buildElement(const macos::Element& element, NamedViews& views);

} // namespace platform::ui
