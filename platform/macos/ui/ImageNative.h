#pragma once

#include "platform/ui/Image.h"

#import <AppKit/AppKit.h>

namespace platform::ui {

struct Image::Native {
    NSImage* image;
};

} // namespace platform::ui
