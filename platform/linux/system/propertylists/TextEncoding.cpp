#include "platform/linux/system/propertylists/TextEncoding.h"

#include "platform/linux/system/propertylists/XMLScalar.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

using namespace std::string_view_literals;

struct Beginning {
    std::string_view bytes;
    std::size_t markSize;
    bool isBigEndian;
};

constexpr std::array<Beginning, 4> utf16Beginnings{{
    {"\xFE\xFF"sv, 2, true},
    {"\xFF\xFE"sv, 2, false},
    {"\0<"sv, 0, true},
    {"<\0"sv, 0, false},
}};

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& letter : lower) {
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    }
    return lower;
}

// What the XML declaration at the beginning says, in lower case; empty when it says nothing.
std::string declaredEncoding(std::string_view text)
{
    if (!text.starts_with("<?xml"))
        return {};
    text = text.substr(0, text.find("?>"));
    const auto name = text.find("encoding");
    if (name == std::string_view::npos)
        return {};
    text.remove_prefix(name + "encoding"sv.size());
    const auto equals = text.find_first_not_of(xmlWhiteSpace);
    if (equals == std::string_view::npos || text[equals] != '=')
        return {};
    text.remove_prefix(equals + 1);
    text.remove_prefix(std::min(text.find_first_not_of(xmlWhiteSpace), text.size()));
    if (!text.starts_with('"') && !text.starts_with('\''))
        return {};
    return lowerCase(text.substr(1, text.find(text.front(), 1) - 1));
}

std::string utf8OfLatin1(std::string_view text)
{
    std::string made;
    made.reserve(text.size());
    for (const char character : text)
        appendCharacter(made, static_cast<unsigned char>(character));
    return made;
}

std::optional<std::string> decoded(std::string_view text)
{
    for (const Beginning& beginning : utf16Beginnings) {
        if (!text.starts_with(beginning.bytes))
            continue;
        text.remove_prefix(beginning.markSize);
        return utf8OfUTF16({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, beginning.isBigEndian);
    }
    if (text.starts_with(utf8ByteOrderMark))
        return std::string(text.substr(utf8ByteOrderMark.size()));
    const std::string encoding = declaredEncoding(text);
    if (encoding == "iso-8859-1" || encoding == "latin1")
        return utf8OfLatin1(text);
    const bool isUTF8 = encoding.empty() || encoding == "utf-8" || encoding == "utf8" || encoding == "us-ascii";
    return isUTF8 ? std::optional(std::string(text)) : std::nullopt;
}

} // namespace

std::optional<std::string> utf8OfUTF16(std::span<const std::uint8_t> bytes, bool isBigEndian)
{
    const std::size_t high = isBigEndian ? 0 : 1;
    const auto unitAt = [&](std::size_t at) {
        return static_cast<char32_t>(bytes[at + high] << 8 | bytes[at + 1 - high]);
    };
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    std::string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        char32_t character = unitAt(at);
        if (isHighSurrogate(character) && bytes.size() - at >= 4 && isLowSurrogate(unitAt(at + 2))) {
            character = characterOfSurrogates(character, unitAt(at + 2));
            at += 2;
        }
        if (!appendCharacter(text, character))
            return std::nullopt;
    }
    return text;
}

std::optional<std::string> utf8OfText(std::span<const std::uint8_t> bytes)
{
    auto text = decoded({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!text || text->find('\0') != std::string::npos || !isValidUTF8(*text))
        return std::nullopt;
    return text;
}

} // namespace platform
