#include "platform/URL.h"

#include <algorithm>

namespace platform {

namespace {

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isAsciiDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool formsScheme(std::string_view text)
{
    return !text.empty() && isAsciiLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return isAsciiLetter(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

bool mayStandInURL(char c)
{
    constexpr std::string_view others = "-._~:/?#[]@!$&'()*+,;=%";
    return isAsciiLetter(c) || isAsciiDigit(c) || others.contains(c);
}

} // namespace

bool formsURL(std::string_view text)
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || !formsScheme(text.substr(0, colon)))
        return false;
    const auto rest = text.substr(colon + 1);
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (!mayStandInURL(rest[i]))
            return false;
        if (rest[i] == '%' && (i + 2 >= rest.size() || !isHexDigit(rest[i + 1]) || !isHexDigit(rest[i + 2])))
            return false;
    }
    return !rest.empty();
}

} // namespace platform
