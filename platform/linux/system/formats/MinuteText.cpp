#include "platform/linux/system/formats/MinuteText.h"

#include <cstddef>
#include <unicode/fieldpos.h>
#include <unicode/uchar.h>

namespace platform {

namespace {

std::string bytesOf(const icu::UnicodeString& characters)
{
    std::string bytes;
    characters.toUTF8String(bytes);
    return bytes;
}

} // namespace

std::optional<MinuteText> MinuteText::of(const icu::DateFormat& format, std::int64_t minute)
{
    icu::UnicodeString characters;
    icu::FieldPosition place(UDAT_SECOND_FIELD);
    format.format(static_cast<double>(minute) * Length * 1000, characters, place);
    const auto begin = place.getBeginIndex();
    // Its first second has to be "00". It is not in zones that were seconds off, as there were before 1972.
    if (place.getEndIndex() - begin != 2)
        return std::nullopt;
    const auto zero = characters.charAt(begin);
    if (characters.charAt(begin + 1) != zero || u_charDigitValue(zero) != 0)
        return std::nullopt;
    MinuteText text;
    text._minute = minute;
    text._before = bytesOf(characters.tempSubStringBetween(0, begin));
    text._after = bytesOf(characters.tempSubString(begin + 2));
    for (std::size_t digit = 0; digit < text._digits.size(); ++digit)
        text._digits[digit] = bytesOf(icu::UnicodeString(static_cast<char16_t>(zero + digit)));
    return text;
}

std::string MinuteText::text(int second) const
{
    std::string text;
    text.reserve(_before.size() + 8 + _after.size());
    return text.append(_before)
        .append(_digits[static_cast<std::size_t>(second / 10)])
        .append(_digits[static_cast<std::size_t>(second % 10)])
        .append(_after);
}

} // namespace platform
