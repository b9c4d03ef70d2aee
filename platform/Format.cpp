#include "platform/Format.h"

#include <algorithm>
#include <charconv>

namespace platform {

namespace {

// One conversion, taken apart.
struct Conversion {
    std::size_t position = 0; // counted from 1; 0 takes the next argument
    int bits = 32;
    char letter = 0;
};

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

// The log's privacy mark, which changes nothing in the text. False when it isn't closed.
bool skipBraces(std::string_view& format)
{
    if (format.empty() || format.front() != '{')
        return true;
    const std::size_t end = format.find('}');
    if (end == std::string_view::npos)
        return false;
    format.remove_prefix(end + 1);
    return true;
}

bool takePosition(std::string_view& format, std::size_t& position)
{
    if (format.empty() || !isDigit(format.front()))
        return true;
    const auto [end, error] = std::from_chars(format.data(), format.data() + format.size(), position);
    const auto length = static_cast<std::size_t>(end - format.data());
    if (error != std::errc() || position == 0 || length == format.size() || format[length] != '$')
        return false;
    format.remove_prefix(length + 1);
    return true;
}

bool takePrefix(std::string_view& format, std::string_view prefix)
{
    if (!format.starts_with(prefix))
        return false;
    format.remove_prefix(prefix.size());
    return true;
}

int takeLength(std::string_view& format)
{
    if (takePrefix(format, "hh"))
        return 8;
    if (takePrefix(format, "h"))
        return 16;
    for (const std::string_view modifier : {"ll", "l", "q", "z"}) {
        if (takePrefix(format, modifier))
            return 64;
    }
    return 32;
}

// `format` begins behind the percent sign.
bool takeConversion(std::string_view& format, Conversion& conversion)
{
    if (!takePosition(format, conversion.position) || !skipBraces(format))
        return false;
    conversion.bits = takeLength(format);
    if (format.empty())
        return false;
    conversion.letter = format.front();
    format.remove_prefix(1);
    return true;
}

// A text is no number, and an object reads as one by value.
std::optional<std::uint64_t> number(const FormatArgument& argument)
{
    const FormatArgument::Value& value = argument.value();
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return static_cast<std::uint64_t>(*integer);
    if (const auto* integer = std::get_if<std::uint64_t>(&value))
        return *integer;
    if (const auto* object = std::get_if<const PropertyList*>(&value)) {
        const std::uint64_t* large = (*object)->unsignedInteger();
        return large ? *large : static_cast<std::uint64_t>((*object)->integerValue());
    }
    if (std::holds_alternative<std::nullptr_t>(value))
        return 0;
    return std::nullopt;
}

void appendInteger(std::string& out, auto integer, int base = 10)
{
    char digits[24];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), integer, base);
    out.append(digits, end);
}

// As C prints it: an argument wider than the conversion loses its upper bits.
bool appendNumber(std::string& out, const Conversion& conversion, const FormatArgument& argument)
{
    const std::optional<std::uint64_t> whole = number(argument);
    if (!whole)
        return false;
    const int unused = 64 - conversion.bits;
    const std::uint64_t shifted = *whole << unused;
    switch (conversion.letter) {
    case 'd':
    case 'i':
        appendInteger(out, static_cast<std::int64_t>(shifted) >> unused);
        return true;
    case 'u':
        appendInteger(out, shifted >> unused);
        return true;
    case 'x':
        appendInteger(out, shifted >> unused, 16);
        return true;
    default:
        return *whole <= 0x10FFFF && appendCharacter(out, static_cast<char32_t>(*whole));
    }
}

bool appendObject(std::string& out, char letter, const FormatArgument& argument)
{
    const FormatArgument::Value& value = argument.value();
    if (const auto* text = std::get_if<std::string_view>(&value)) {
        out.append(*text);
        return true;
    }
    if (std::holds_alternative<std::nullptr_t>(value)) {
        out.append("(null)");
        return true;
    }
    if (const auto* object = std::get_if<const PropertyList*>(&value)) {
        appendDescription(out, **object);
        return true;
    }
    if (letter == 's')
        return false;
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        appendInteger(out, *integer);
    else
        appendInteger(out, std::get<std::uint64_t>(value));
    return true;
}

bool appendConversion(std::string& out, const Conversion& conversion, const FormatArgument& argument)
{
    switch (conversion.letter) {
    case '@':
    case 's':
        return appendObject(out, conversion.letter, argument);
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'c':
        return appendNumber(out, conversion, argument);
    default:
        return false;
    }
}

bool appendAll(std::string& out, std::string_view format, std::initializer_list<FormatArgument> arguments)
{
    std::size_t next = 0;
    for (;;) {
        const std::size_t percent = format.find('%');
        out.append(format.substr(0, percent));
        if (percent == std::string_view::npos)
            return true;
        format.remove_prefix(percent + 1);
        if (takePrefix(format, "%")) {
            out.push_back('%');
            continue;
        }
        Conversion conversion;
        if (!takeConversion(format, conversion))
            return false;
        const std::size_t index = conversion.position ? conversion.position - 1 : next++;
        if (index >= arguments.size() || !appendConversion(out, conversion, arguments.begin()[index]))
            return false;
    }
}

} // namespace

bool appendFormat(std::string& out, std::string_view format, std::initializer_list<FormatArgument> arguments)
{
    const std::size_t size = out.size();
    const bool filled = appendAll(out, format, arguments);
    if (!filled)
        out.resize(size);
    return filled;
}

std::optional<std::string> formatString(std::string_view format, std::initializer_list<FormatArgument> arguments)
{
    std::string text;
    if (!appendFormat(text, format, arguments))
        return std::nullopt;
    return text;
}

} // namespace platform
