#include "platform/linux/system/propertylists/XMLScalar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace platform {

namespace {

std::string_view trimmed(std::string_view text)
{
    const auto begin = text.find_first_not_of(xmlWhiteSpace);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(xmlWhiteSpace) + 1 - begin);
}

template <class Integer>
std::optional<Integer> wholeNumber(std::string_view digits, int base)
{
    Integer number = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

int base64Value(char character)
{
    if (character >= 'A' && character <= 'Z')
        return character - 'A';
    if (character >= 'a' && character <= 'z')
        return character - 'a' + 26;
    if (character >= '0' && character <= '9')
        return character - '0' + 52;
    if (character == '+')
        return 62;
    return character == '/' ? 63 : -1;
}

} // namespace

std::optional<PropertyList> integerOfXML(std::string_view text)
{
    text = trimmed(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const auto magnitude = wholeNumber<std::uint64_t>(text.substr(isHexadecimal ? 2 : 0), isHexadecimal ? 16 : 10);
    if (!magnitude)
        return std::nullopt;
    if (!isNegative)
        return *magnitude;
    constexpr auto largest = std::uint64_t{1} << 63;
    return *magnitude <= largest ? std::optional<PropertyList>(static_cast<std::int64_t>(0 - *magnitude))
                                 : std::nullopt;
}

std::optional<PropertyList> realOfXML(const std::string& text)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array<std::pair<std::string_view, double>, 7> names{{
        {"nan", std::numeric_limits<double>::quiet_NaN()},
        {"inf", infinity},
        {"+inf", infinity},
        {"-inf", -infinity},
        {"infinity", infinity},
        {"+infinity", infinity},
        {"-infinity", -infinity},
    }};
    const std::string_view word = trimmed(text);
    for (const auto& [name, value] : names) {
        if (word == name)
            return value;
    }
    std::istringstream stream{std::string(word)};
    stream.imbue(std::locale::classic()); // whatever the process's locale takes for a decimal point
    double real = 0;
    if (!(stream >> real) || stream.peek() != std::istringstream::traits_type::eof())
        return std::nullopt;
    return real;
}

std::optional<PropertyList> dateOfXML(std::string_view text)
{
    using namespace std::chrono;
    constexpr std::string_view pattern = "0000-00-00T00:00:00Z";
    text = trimmed(text);
    const auto matches = [](char character, char expected) {
        return expected == '0' ? character >= '0' && character <= '9' : character == expected;
    };
    if (!std::ranges::equal(text, pattern, matches))
        return std::nullopt;
    const auto field = [&](std::size_t at, std::size_t size) {
        return wholeNumber<unsigned>(text.substr(at, size), 10).value_or(0);
    };
    const year_month_day day{year(static_cast<int>(field(0, 4))), month(field(5, 2)), std::chrono::day(field(8, 2))};
    const unsigned hour = field(11, 2);
    const unsigned minute = field(14, 2);
    const unsigned second = field(17, 2);
    if (!day.ok() || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    constexpr sys_days reference{year_month_day{year(2001), January, std::chrono::day(1)}};
    const auto time = sys_days(day) - reference + hours(hour) + minutes(minute) + seconds(second);
    return Date{static_cast<double>(duration_cast<seconds>(time).count())};
}

std::optional<PropertyList> dataOfXML(std::string_view text)
{
    Data data;
    data.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char character : text) {
        if (character == ' ' || character == '\t' || character == '\r' || character == '\n')
            continue;
        if (character == '=') {
            ++padding;
            continue;
        }
        const int value = base64Value(character);
        if (value < 0 || padding > 0)
            return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        if (++digits % 4 != 0)
            continue;
        for (const int shift : {16, 8, 0})
            data.push_back(static_cast<std::uint8_t>(bits >> shift));
    }
    const std::size_t rest = digits % 4;
    if (rest == 1 || padding != (4 - rest) % 4)
        return std::nullopt;
    if (rest >= 2)
        data.push_back(static_cast<std::uint8_t>(rest == 2 ? bits >> 4 : bits >> 10));
    if (rest == 3)
        data.push_back(static_cast<std::uint8_t>(bits >> 2));
    return PropertyList(std::move(data));
}

char32_t characterOfEntity(std::string_view entity)
{
    constexpr std::array<std::pair<std::string_view, char32_t>, 5> names{{
        {"amp", '&'},
        {"lt", '<'},
        {"gt", '>'},
        {"quot", '"'},
        {"apos", '\''},
    }};
    if (entity.starts_with("#x"))
        return wholeNumber<std::uint32_t>(entity.substr(2), 16).value_or(0);
    if (entity.starts_with('#'))
        return wholeNumber<std::uint32_t>(entity.substr(1), 10).value_or(0);
    const auto found = std::ranges::find(names, entity, &std::pair<std::string_view, char32_t>::first);
    return found == names.end() ? 0 : found->second;
}

} // namespace platform
