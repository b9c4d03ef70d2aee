#pragma once

#include "platform/macos/ui/ViewNative.h"

namespace platform::ui {

struct ProgressIndicatorNative : View::Native {
    using Native::Native;

    bool isAnimating = false; // the toolkit does not tell
};

} // namespace platform::ui
