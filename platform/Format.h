#pragma once

#include "platform/Error.h"
#include "platform/Unicode.h"

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

// One value for a format string. An object may be absent, which "%@" prints as "(null)".
class FormatArgument {
public:
    FormatArgument(const char* text) : _value(text ? Value(std::string_view(text)) : Value(nullptr)) { }
    FormatArgument(std::string_view text) : _value(text) { }
    FormatArgument(const std::string& text) : _value(std::string_view(text)) { }
    FormatArgument(const PropertyList* object) : _value(object ? Value(object) : Value(nullptr)) { }
    FormatArgument(const PropertyList& object) : _value(&object) { }
    FormatArgument(std::signed_integral auto number) : _value(static_cast<std::int64_t>(number)) { }
    FormatArgument(std::unsigned_integral auto number) : _value(static_cast<std::uint64_t>(number)) { }

    using Value = std::variant<std::nullptr_t, std::string_view, const PropertyList*, std::int64_t, std::uint64_t>;
    const Value& value() const { return _value; }

private:
    Value _value;
};

// Fills a printf-style format: "%@" (an object's description), "%s", "%d", "%i", "%u", "%x" with the length
// modifiers h, l, ll, q and z, "%c", "%%", positions such as "%2$@", and the log's "%{public}s" forms. A number
// conversion takes a number object by value and an absent one as 0. Nothing is appended for an unknown conversion or
// too few arguments; surplus arguments are ignored. As in C, a number loses the bits above the conversion's width (32
// without a modifier). The text is appended to `out`, untouched on failure.
bool appendFormat(std::string& out, std::string_view format, std::initializer_list<FormatArgument> arguments);
std::optional<std::string> formatString(std::string_view format, std::initializer_list<FormatArgument> arguments);

// What "%@" prints: strings as they are; numbers in decimal (booleans 1 and 0); arrays and dictionaries as the
// platform's parenthesised listing, one element a line, a dictionary's keys in order; a collection inside another
// brings its own indentation of four spaces a level, so that its opening bracket is indented twice.
std::string description(const PropertyList& value);
void appendDescription(std::string& out, const PropertyList& value);

} // namespace platform
