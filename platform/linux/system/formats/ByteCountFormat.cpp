#include "platform/ByteCountFormat.h"

#include "platform/linux/system/formats/UserLocale.h"

#include <array>
#include <optional>
#include <unicode/numberformatter.h>

namespace platform {

namespace {

struct ByteUnit {
    const char16_t* skeleton;
    double scale; // one unit in bytes
    double step;  // the value's last shown place, in units
};

// The locales' data ends with petabytes.
constexpr std::array<ByteUnit, 6> byteUnits{{
    {u"unit/byte unit-width-full-name", 1, 1},
    {u"unit/kilobyte unit-width-short .", 1e3, 1},
    {u"unit/megabyte unit-width-short .#", 1e6, 0.1},
    {u"unit/gigabyte unit-width-short .##", 1e9, 0.01},
    {u"unit/terabyte unit-width-short .##", 1e12, 0.01},
    {u"unit/petabyte unit-width-short .##", 1e15, 0.01},
}};

// What would be shown as a thousand of a unit is one of the next.
std::size_t unitOfByteCount(double bytes)
{
    std::size_t unit = 0;
    while (unit + 1 < byteUnits.size() && bytes / byteUnits[unit].scale >= 1000 - byteUnits[unit].step / 2)
        ++unit;
    return unit;
}

} // namespace

struct ByteCountFormat::Native {
    icu::Locale locale = userLocale("LC_NUMERIC");
    std::array<std::optional<icu::number::LocalizedNumberFormatter>, byteUnits.size()> formatters; // made on first use
};

ByteCountFormat::ByteCountFormat() : _native(std::make_unique<Native>()) { }

ByteCountFormat::~ByteCountFormat() = default;

std::string ByteCountFormat::stringFromByteCount(std::uint64_t count)
{
    const auto bytes = static_cast<double>(count);
    const auto unit = unitOfByteCount(bytes);
    auto& formatter = _native->formatters[unit];
    UErrorCode status = U_ZERO_ERROR;
    if (!formatter)
        formatter = icu::number::NumberFormatter::forSkeleton(byteUnits[unit].skeleton, status).locale(_native->locale);
    std::string text;
    formatter->formatDouble(bytes / byteUnits[unit].scale, status).toString(status).toUTF8String(text);
    return U_SUCCESS(status) ? text : std::to_string(count);
}

} // namespace platform
