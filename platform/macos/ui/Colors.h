#pragma once

#include "platform/Color.h"

#import <AppKit/AppKit.h>

namespace platform::ui {

NSColor* nativeColor(const Color& color);

} // namespace platform::ui
