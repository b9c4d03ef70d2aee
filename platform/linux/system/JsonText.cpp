#include "platform/linux/system/JsonText.h"

#include "platform/Format.h"

namespace platform {

namespace {

std::size_t sequenceLength(unsigned char lead)
{
    return lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

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
    while (!text.empty()) {
        auto sequence = text.substr(0, sequenceLength(static_cast<unsigned char>(text.front())));
        if (isValidUTF8(sequence)) {
            valid += sequence;
            text.remove_prefix(sequence.size());
        } else {
            valid += "\uFFFD";
            text.remove_prefix(1);
        }
    }
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
