#pragma once

#include "platform/ui/TextField.h"

#include <cstddef>
#include <string_view>

// The rule of a text field that always holds one to three digits.
class BRVNumberTextField {
public:
    // Whether the user may replace the range of a text of `currentLength` UTF-16 code units by the replacement (UTF-8):
    // only by decimal digits of any script, and only so that one to three code units result. The field can therefore
    // never be emptied.
    static bool shouldChangeText(std::size_t currentLength, platform::ui::TextRange range,
                                 std::string_view replacement);
};
