#pragma once

#include "platform/Color.h"

#include <string>

namespace platform::ui {

struct FontDescription {
    std::string family;
    double pointSize = 0;
};

// The user's fixed-pitch font at its default size. Main thread.
FontDescription userFixedPitchFont();

enum class Appearance { Light, Dark };

// What a colour is in one appearance, whichever the user has. Any thread.
FixedColor resolvedColor(const Color& color, Appearance appearance);

} // namespace platform::ui
