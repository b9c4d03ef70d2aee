#pragma once

#include <variant>

namespace platform {

// Colours that the platform chooses, to suit the theme at hand.
enum class NamedColor {
    Text,
    SystemBlue,
    SystemGreen,
    SystemOrange,
    SystemRed,
    SelectedTextBackground,
    Label,
    Link,
    PressedLink // the link's with the effect that the platform gives to what is pressed
};

// Components from 0 to 1, in sRGB.
struct FixedColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const FixedColor&) const = default;
};

using Color = std::variant<NamedColor, FixedColor>;

} // namespace platform
