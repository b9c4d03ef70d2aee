#include "platform/linux/system/journal/JsonText.h"

#include "platform/Unicode.h"

namespace platform {

namespace {

void appendEscaped(std::string& out, char character)
{
    switch (character) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\t':
        out += "\\t";
        return;
    case '\r':
        out += "\\r";
        return;
    default:
        break;
    }
    auto code = static_cast<unsigned char>(character);
    if (code < 0x20) {
        constexpr const char* digits = "0123456789abcdef";
        out += "\\u00";
        out += digits[code >> 4];
        out += digits[code & 15];
        return;
    }
    out += character;
}

} // namespace

std::string validUTF8(std::string_view text)
{
    if (isValidUTF8(text))
        return std::string(text);
    std::string valid;
    while (!text.empty())
        appendCharacter(valid, takeCharacter(text));
    return valid;
}

void appendJsonString(std::string& out, std::string_view text)
{
    out += '"';
    for (char character : validUTF8(text))
        appendEscaped(out, character);
    out += '"';
}

} // namespace platform
