#include "schedule/BRVNumberTextField.h"

#include "platform/Localization.h"
#include "platform/Unicode.h"

#include <optional>

namespace {

// The length in UTF-16 code units of a text of decimal digits only; nothing for any other.
std::optional<std::size_t> lengthOfDigits(std::string_view text)
{
    std::size_t length = 0;
    while (!text.empty()) {
        const char32_t character = platform::takeCharacter(text);
        if (!platform::isDecimalDigit(character))
            return std::nullopt;
        length += character > 0xFFFF ? 2 : 1;
    }
    return length;
}

} // namespace

bool BRVNumberTextField::shouldChangeText(std::size_t currentLength, platform::ui::TextRange range,
                                          std::string_view replacement)
{
    const std::optional<std::size_t> replacementLength = lengthOfDigits(replacement);
    // A resulting length of 0 wraps around to the largest number, and so is refused as well.
    return replacementLength && currentLength + *replacementLength - range.length - 1 < 3;
}
