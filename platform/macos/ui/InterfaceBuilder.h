#pragma once

#include "platform/macos/interface/InterfaceConstraints.h"
#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/ui/Interface.h"

#import <AppKit/AppKit.h>
#include <memory>

namespace platform::ui {

// Adds the constraints to the holder; they count its children from 0.
void constrain(NSView* holder, NSArray<NSView*>* children, const macos::ElementConstraints& constraints);

// Makes a description's views, with the constraints between them. Those with an identifier are added to `views`.
std::shared_ptr<View> buildElement(const macos::Element& element, NamedViews& views);

} // namespace platform::ui
