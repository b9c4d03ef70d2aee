#include "platform/linux/system/formats/LargeNumbers.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <locale>
#include <sstream>

namespace platform {

namespace {

constexpr std::string_view numberCharacters = "+-.0123456789eE";
constexpr std::string_view digits = "0123456789";

std::size_t skipDigits(std::string_view text, std::size_t place)
{
    return std::min(text.find_first_not_of(digits, place), text.size());
}

// Where the whole part of a number ends; nothing where there is none as JSON writes them.
std::optional<std::size_t> endOfWholePart(std::string_view number)
{
    const std::size_t begin = number.starts_with('-') ? 1 : 0;
    const auto end = skipDigits(number, begin);
    const bool hasLeadingZero = end > begin + 1 && number[begin] == '0';
    return end == begin || hasLeadingZero ? std::nullopt : std::optional(end);
}

// What follows the whole part: a fraction, an exponent, both or neither.
bool isFractionWithExponent(std::string_view text)
{
    if (text.starts_with('.')) {
        const auto end = skipDigits(text, 1);
        if (end == 1)
            return false;
        text.remove_prefix(end);
    }
    if (text.empty())
        return true;
    if (text.front() != 'e' && text.front() != 'E')
        return false;
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    return !text.empty() && skipDigits(text, 0) == text.size();
}

template <class Integer>
bool isBeyond(std::string_view number)
{
    Integer value = 0;
    return std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc::result_out_of_range;
}

bool isLargeNumber(std::string_view number)
{
    const auto end = endOfWholePart(number);
    if (!end || !isFractionWithExponent(number.substr(*end)))
        return false;
    if (*end == number.size())
        return number.starts_with('-') ? isBeyond<std::int64_t>(number) : isBeyond<std::uint64_t>(number);
    std::istringstream reader{std::string(number)};
    reader.imbue(std::locale::classic());
    double value = 0;
    return !(reader >> value);
}

std::size_t endOfString(std::string_view json, std::size_t quote)
{
    auto place = json.find_first_of("\"\\", quote + 1);
    while (place != std::string_view::npos && json[place] == '\\')
        place = json.find_first_of("\"\\", place + 2);
    return place == std::string_view::npos ? json.size() : place + 1;
}

// A number is no key, and must not become one.
bool isFollowedByColon(std::string_view json, std::size_t place)
{
    const auto next = json.find_first_not_of(" \t\r\n", place);
    return next != std::string_view::npos && json[next] == ':';
}

} // namespace

std::optional<std::string> quoteLargeNumbers(std::string_view json)
{
    std::string quoted;
    std::size_t kept = 0;
    for (std::size_t place = 0; place < json.size();) {
        if (json[place] == '"') {
            place = endOfString(json, place);
            continue;
        }
        const auto end = std::min(json.find_first_not_of(numberCharacters, place), json.size());
        const auto number = json.substr(place, end - place);
        if (isLargeNumber(number) && !isFollowedByColon(json, end)) {
            quoted.append(json.substr(kept, place - kept)).append("\"").append(number).append("\"");
            kept = end;
        }
        place = std::max(end, place + 1);
    }
    if (kept == 0)
        return std::nullopt;
    return quoted.append(json.substr(kept));
}

} // namespace platform
