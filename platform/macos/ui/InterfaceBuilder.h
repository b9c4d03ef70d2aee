#pragma once

#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/ui/View.h"

#import <AppKit/AppKit.h>
#include <map>
#include <memory>
#include <string>

namespace platform::ui {

using NamedViews = std::map<std::string, std::shared_ptr<View>, std::less<>>;

// Makes a description's views, with the constraints between them. Those with an identifier are added to `views`.
std::shared_ptr<View> buildElement(const macos::Element& element, NamedViews& views);

} // namespace platform::ui
