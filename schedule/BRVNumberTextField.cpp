#include "schedule/BRVNumberTextField.h"

#include "platform/Format.h"
#include "platform/Localization.h"

#include <optional>

namespace {

// Takes the first character off a valid, non-empty text.
char32_t takeCharacter(std::string_view& text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i)
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
    text.remove_prefix(length);
    return character;
}

// The length in UTF-16 code units of a text of decimal digits only; nothing for any other.
std::optional<std::size_t> lengthOfDigits(std::string_view text)
{
    if (!platform::isValidUTF8(text))
        return std::nullopt;
    std::size_t length = 0;
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
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
