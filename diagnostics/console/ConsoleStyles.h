#pragma once

#include "platform/StyledText.h"

// How the console's columns and messages look: all in the user's fixed-pitch font, each in a colour.
struct ConsoleStyles {
    platform::TextAttributes plain;
    platform::TextAttributes blue;
    platform::TextAttributes green;
    platform::TextAttributes orange;
    platform::TextAttributes red;
};
