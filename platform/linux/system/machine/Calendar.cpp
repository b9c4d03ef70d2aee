#include "platform/Calendar.h"

#include <ctime>

namespace platform {

TimeOfDay currentTimeOfDay()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_hour, local.tm_min};
}

} // namespace platform
