#include "platform/UTF8.h"

#include "platform/Format.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

struct Form {
    std::size_t length;
    char32_t lowest; // a smaller value has a shorter form
    char32_t bits;   // of the first byte
};

std::optional<Form> formOf(unsigned char first)
{
    if (first < 0x80)
        return Form{1, 0, first};
    if (first >= 0xC2 && first < 0xE0)
        return Form{2, 0x80, first & 0x1FU};
    if (first >= 0xE0 && first < 0xF0)
        return Form{3, 0x800, first & 0x0FU};
    if (first >= 0xF0 && first < 0xF5)
        return Form{4, 0x10000, first & 0x07U};
    return std::nullopt;
}

bool isScalarValue(char32_t character)
{
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

// Most text is ASCII: looks at eight bytes at a time.
std::size_t asciiPrefix(std::string_view text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t length = 0;
    for (std::uint64_t word; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if (word & highBits)
            break;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80)
        ++length;
    return length;
}

} // namespace

std::optional<char32_t> takeCharacter(std::string_view& text)
{
    const auto form = formOf(static_cast<unsigned char>(text.front()));
    if (!form || text.size() < form->length)
        return std::nullopt;
    char32_t character = form->bits;
    for (std::size_t i = 1; i < form->length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80)
            return std::nullopt;
        character = (character << 6) | (byte & 0x3FU);
    }
    if (character < form->lowest || !isScalarValue(character))
        return std::nullopt;
    text.remove_prefix(form->length);
    return character;
}

bool appendUTF8(std::string& out, char32_t character)
{
    if (!isScalarValue(character))
        return false;
    const auto continuation = [&](int shift) {
        out.push_back(static_cast<char>(0x80 | ((character >> shift) & 0x3F)));
    };
    if (character < 0x80) {
        out.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (character >> 6)));
        continuation(0);
    } else if (character < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (character >> 12)));
        continuation(6);
        continuation(0);
    } else {
        out.push_back(static_cast<char>(0xF0 | (character >> 18)));
        continuation(12);
        continuation(6);
        continuation(0);
    }
    return true;
}

bool isValidUTF8(std::string_view text)
{
    for (;;) {
        text.remove_prefix(asciiPrefix(text));
        if (text.empty())
            return true;
        if (!takeCharacter(text))
            return false;
    }
}

} // namespace platform
