#include "scheduling/InstantDate.h"

#include <cmath>

namespace scheduling {

namespace {

constexpr Instant referenceDate = 978'307'200; // 2001-01-01

} // namespace

platform::Date dateOf(Instant instant)
{
    return {static_cast<double>(instant - referenceDate)};
}

std::optional<Instant> instantOf(const platform::PropertyList* date)
{
    const auto* const found = date ? date->date() : nullptr;
    const double seconds = found ? found->secondsSinceReferenceDate : std::nan("");
    constexpr auto first = static_cast<double>(earliestInstant - referenceDate);
    constexpr auto last = static_cast<double>(latestInstant - referenceDate);
    if (!(seconds >= first && seconds <= last))
        return std::nullopt;
    return static_cast<Instant>(std::floor(seconds)) + referenceDate;
}

void setDate(platform::Dictionary& dictionary, const char* key, std::optional<Instant> instant)
{
    if (instant)
        dictionary.set(key, dateOf(*instant));
}

} // namespace scheduling
