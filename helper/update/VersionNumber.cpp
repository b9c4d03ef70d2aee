#include "helper/update/VersionNumber.h"

#include <charconv>

namespace helper {

namespace {

constexpr std::size_t maximumNumbers = 8;

} // namespace

std::optional<VersionNumber> VersionNumber::parse(std::string_view text)
{
    VersionNumber version;
    const char* at = text.data();
    const char* end = at + text.size();
    for (;;) {
        std::uint32_t number = 0;
        auto [next, failure] = std::from_chars(at, end, number);
        if (failure != std::errc() || version._numbers.size() == maximumNumbers)
            return std::nullopt;
        version._numbers.push_back(number);
        if (next == end)
            break;
        if (*next != '.')
            return std::nullopt;
        at = next + 1;
    }
    while (!version._numbers.empty() && version._numbers.back() == 0)
        version._numbers.pop_back();
    return version;
}

} // namespace helper
