#include "platform/Unicode.h"

#include <cstdint>
#include <cstring>

namespace platform {

namespace {

struct Lead {
    unsigned continuationBytes;
    char32_t bits;
    char32_t smallest; // anything below has a shorter form
};

// No continuation bytes: not a lead byte.
Lead leadOf(unsigned char byte)
{
    if (byte >= 0xC2 && byte < 0xE0)
        return {1, byte & 0x1FU, 0x80};
    if (byte >= 0xE0 && byte < 0xF0)
        return {2, byte & 0x0FU, 0x800};
    if (byte >= 0xF0 && byte < 0xF5)
        return {3, byte & 0x07U, 0x10000};
    return {0, 0, 0};
}

bool isCharacter(char32_t value)
{
    return value < 0xD800 || (value >= 0xE000 && value <= 0x10FFFF);
}

// The length of the valid sequence of several bytes at the front, or 0.
std::size_t sequence(std::string_view text, char32_t& character)
{
    const Lead lead = leadOf(static_cast<unsigned char>(text.front()));
    if (lead.continuationBytes == 0 || text.size() <= lead.continuationBytes)
        return 0;
    character = lead.bits;
    for (unsigned i = 1; i <= lead.continuationBytes; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80)
            return 0;
        character = (character << 6) | (byte & 0x3FU);
    }
    return character >= lead.smallest && isCharacter(character) ? lead.continuationBytes + 1 : 0;
}

// How much of the text may be skipped at once because it is ASCII, eight bytes at a time.
std::size_t asciiPrefix(std::string_view text)
{
    std::size_t length = 0;
    while (text.size() - length >= 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + length, 8);
        if (bytes & 0x8080808080808080U)
            break;
        length += 8;
    }
    return length;
}

} // namespace

bool isValidUTF8(std::string_view text)
{
    while (!text.empty()) {
        text.remove_prefix(asciiPrefix(text));
        while (!text.empty() && static_cast<unsigned char>(text.front()) < 0x80)
            text.remove_prefix(1);
        while (!text.empty() && static_cast<unsigned char>(text.front()) >= 0x80) {
            char32_t character = 0;
            const std::size_t length = sequence(text, character);
            if (length == 0)
                return false;
            text.remove_prefix(length);
        }
    }
    return true;
}

char32_t takeCharacter(std::string_view& text)
{
    if (text.empty())
        return endOfText;
    const auto first = static_cast<unsigned char>(text.front());
    char32_t character = first;
    std::size_t length = 1;
    if (first >= 0x80) {
        length = sequence(text, character);
        if (length == 0) {
            character = replacementCharacter;
            length = 1;
        }
    }
    text.remove_prefix(length);
    return character;
}

bool appendCharacter(std::string& text, char32_t character)
{
    if (!isCharacter(character))
        return false;
    const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | (character >> 6));
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | (character >> 12));
        append(0x80 | ((character >> 6) & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | (character >> 18));
        append(0x80 | ((character >> 12) & 0x3F));
        append(0x80 | ((character >> 6) & 0x3F));
        append(0x80 | (character & 0x3F));
    }
    return true;
}

} // namespace platform
