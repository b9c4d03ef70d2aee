#include "platform/Calendar.h"

namespace platform {

std::optional<TimeOfDay> timeOfDayFromComponents(std::int64_t hour, std::int64_t minute)
{
    constexpr std::int64_t minutesPerDay = 24 * 60;
    std::int64_t total = 0;
    if (__builtin_mul_overflow(hour, 60, &total) || __builtin_add_overflow(total, minute, &total))
        return std::nullopt;
    const auto inDay = static_cast<int>((total % minutesPerDay + minutesPerDay) % minutesPerDay);
    return TimeOfDay{inDay / 60, inDay % 60};
}

} // namespace platform
