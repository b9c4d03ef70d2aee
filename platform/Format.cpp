#include "platform/Format.h"

#include <charconv>
#include <cstddef>

namespace platform {

namespace {

struct Conversion {
    std::size_t position = 0; // of the argument, from 1; 0 for the next one
    char letter = 0;
};

// The rest of a conversion after its '%'. Nothing when it is malformed.
std::optional<Conversion> readConversion(std::string_view& rest)
{
    Conversion conversion;
    // The log's privacy form says who may see the value; here everyone who may see the text.
    if (rest.starts_with('{')) {
        const auto end = rest.find('}');
        if (end == std::string_view::npos)
            return std::nullopt;
        rest.remove_prefix(end + 1);
    }
    std::size_t number = 0;
    const auto digits = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (digits.ec == std::errc() && digits.ptr != rest.data() + rest.size() && *digits.ptr == '$' && number > 0) {
        conversion.position = number;
        rest.remove_prefix(static_cast<std::size_t>(digits.ptr - rest.data()) + 1);
    }
    // Values know their own size.
    while (!rest.empty() && std::string_view("hlqz").find(rest.front()) != std::string_view::npos)
        rest.remove_prefix(1);
    if (rest.empty())
        return std::nullopt;
    conversion.letter = rest.front();
    rest.remove_prefix(1);
    return conversion;
}

template <class Integer>
void appendInteger(std::string& out, Integer number, int base = 10)
{
    char digits[24];
    out.append(digits, std::to_chars(std::begin(digits), std::end(digits), number, base).ptr);
}

// The number of an argument: objects by value, absent ones and texts 0.
std::int64_t numberOf(const FormatArgument::Value& value)
{
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return *number;
    if (const auto* number = std::get_if<std::uint64_t>(&value))
        return static_cast<std::int64_t>(*number);
    if (const auto* object = std::get_if<const PropertyList*>(&value))
        return (*object)->integerValue();
    return 0;
}

void appendObject(std::string& out, const FormatArgument::Value& value)
{
    if (const auto* text = std::get_if<std::string_view>(&value))
        out.append(*text);
    else if (const auto* number = std::get_if<std::int64_t>(&value))
        appendInteger(out, *number);
    else if (const auto* natural = std::get_if<std::uint64_t>(&value))
        appendInteger(out, *natural);
    else if (const auto* object = std::get_if<const PropertyList*>(&value))
        out.append(description(**object));
    else
        out.append("(null)");
}

bool appendConversion(std::string& out, char letter, const FormatArgument::Value& value)
{
    switch (letter) {
    case '@':
    case 's':
        appendObject(out, value);
        return true;
    case 'd':
    case 'i':
        appendInteger(out, numberOf(value));
        return true;
    case 'u':
        appendInteger(out, static_cast<std::uint64_t>(numberOf(value)));
        return true;
    case 'x':
        appendInteger(out, static_cast<std::uint64_t>(numberOf(value)), 16);
        return true;
    case 'c':
        out.push_back(static_cast<char>(numberOf(value)));
        return true;
    default:
        return false;
    }
}

bool appendConversions(std::string& out, std::string_view rest, std::initializer_list<FormatArgument> arguments)
{
    std::size_t next = 0;
    for (;;) {
        const auto percent = rest.find('%');
        out.append(rest.substr(0, percent));
        if (percent == std::string_view::npos)
            return true;
        rest.remove_prefix(percent + 1);
        if (rest.starts_with('%')) {
            out.push_back('%');
            rest.remove_prefix(1);
            continue;
        }
        const auto conversion = readConversion(rest);
        if (!conversion)
            return false;
        const std::size_t index = conversion->position ? conversion->position - 1 : next++;
        if (index >= arguments.size() || !appendConversion(out, conversion->letter, arguments.begin()[index].value()))
            return false;
    }
}

} // namespace

bool appendFormat(std::string& out, std::string_view format, std::initializer_list<FormatArgument> arguments)
{
    const std::size_t before = out.size();
    if (appendConversions(out, format, arguments))
        return true;
    out.resize(before);
    return false;
}

std::optional<std::string> formatString(std::string_view format, std::initializer_list<FormatArgument> arguments)
{
    std::string text;
    if (!appendFormat(text, format, arguments))
        return std::nullopt;
    return text;
}

} // namespace platform
