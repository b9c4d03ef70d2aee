#include "platform/DateFormat.h"

#include "platform/linux/system/formats/MinuteText.h"
#include "platform/linux/system/formats/UserLocale.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <unicode/datefmt.h>
#include <unicode/timezone.h>

namespace platform {

namespace {

icu::DateFormat::EStyle icuStyle(DateStyle style)
{
    switch (style) {
    case DateStyle::None:
        return icu::DateFormat::kNone;
    case DateStyle::Short:
        return icu::DateFormat::kShort;
    default:
        return icu::DateFormat::kMedium;
    }
}

icu::UnicodeString icuText(std::string_view text)
{
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

} // namespace

struct DateFormat::Native {
    explicit Native(icu::DateFormat* made) : format(made)
    {
        if (format)
            format->adoptTimeZone(icu::TimeZone::detectHostTimeZone());
    }

    std::unique_ptr<icu::DateFormat> format; // null when the library lacks its data
    std::optional<MinuteText> minute;
};

DateFormat::DateFormat(std::unique_ptr<Native> native) : _native(std::move(native)) { }

DateFormat::~DateFormat() = default;
DateFormat::DateFormat(DateFormat&&) noexcept = default;
DateFormat& DateFormat::operator=(DateFormat&&) noexcept = default;

DateFormat DateFormat::withStyles(DateStyle date, DateStyle time)
{
    return DateFormat(std::make_unique<Native>(
        icu::DateFormat::createDateTimeInstance(icuStyle(date), icuStyle(time), userLocale("LC_TIME"))));
}

void DateFormat::setTimeZone(const std::string& name)
{
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icuText(name)));
    if (!_native->format || *zone == icu::TimeZone::getUnknown())
        return;
    _native->format->setTimeZone(*zone);
    _native->minute.reset();
}

std::string DateFormat::stringFromDate(double seconds)
{
    auto& [format, minute] = *_native;
    std::string text;
    if (!format)
        return text;
    const double whole = std::floor(seconds / MinuteText::Length);
    // Later and earlier ones are not shared, nor are they dates of anything.
    if (std::abs(whole) < 1e12) {
        const auto number = static_cast<std::int64_t>(whole);
        if (!minute || minute->minute() != number)
            minute = MinuteText::of(*format, number);
        if (minute)
            return minute->text(static_cast<int>(std::floor(seconds) - whole * MinuteText::Length));
    }
    icu::UnicodeString characters;
    format->format(seconds * 1000, characters);
    characters.toUTF8String(text);
    return text;
}

} // namespace platform
