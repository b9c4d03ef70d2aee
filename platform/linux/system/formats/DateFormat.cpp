#include "platform/DateFormat.h"

#include "platform/linux/system/formats/UserLocale.h"

#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>
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
        if (!format)
            return;
        format->adoptTimeZone(icu::TimeZone::detectHostTimeZone());
        format->setLenient(false);
        calendar.reset(format->getCalendar()->clone());
    }

    std::unique_ptr<icu::DateFormat> format; // null when the library lacks its data
    std::unique_ptr<icu::Calendar> calendar;
};

DateFormat::DateFormat(std::unique_ptr<Native> native) : _native(std::move(native)) { }

DateFormat::~DateFormat() = default;
DateFormat::DateFormat(DateFormat&&) noexcept = default;
DateFormat& DateFormat::operator=(DateFormat&&) noexcept = default;

DateFormat DateFormat::withPattern(std::string_view pattern)
{
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(icuText(pattern), userLocale("LC_TIME"), status);
    return DateFormat(std::make_unique<Native>(U_SUCCESS(status) ? format.release() : nullptr));
}

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
    _native->calendar->setTimeZone(*zone);
}

std::optional<double> DateFormat::dateFromString(std::string_view text)
{
    if (!_native->format || text.size() > 1000)
        return std::nullopt;
    const auto characters = icuText(text);
    icu::ParsePosition position(0);
    auto& calendar = *_native->calendar;
    calendar.clear();
    _native->format->parse(characters, calendar, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != characters.length())
        return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const double milliseconds = calendar.getTime(status);
    return U_SUCCESS(status) ? std::optional(milliseconds / 1000) : std::nullopt;
}

std::string DateFormat::stringFromDate(double seconds)
{
    std::string text;
    if (!_native->format)
        return text;
    icu::UnicodeString characters;
    _native->format->format(seconds * 1000, characters);
    characters.toUTF8String(text);
    return text;
}

} // namespace platform
