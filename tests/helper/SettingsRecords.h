#pragma once

#include "helper/SettingsStore.h"
#include "protocol/ScheduleRanges.h"

#include <string_view>
#include <utility>

// A record that is in order, with one key set to something else.
inline platform::Dictionary settingsWith(std::string_view key, platform::PropertyList value)
{
    auto settings = defaultScheduleSettings();
    settings.set(key, std::move(value));
    return settings;
}

inline platform::Dictionary settingsWithout(std::string_view key)
{
    auto settings = defaultScheduleSettings();
    settings.remove(key);
    return settings;
}

inline platform::Dictionary intervalSettings(platform::Dictionary interval)
{
    auto settings = settingsWith("BackupsMode", "Interval");
    settings.set("Interval", std::move(interval));
    return settings;
}

inline platform::Dictionary calendarSettings(platform::Array entries)
{
    auto settings = settingsWith("BackupsMode", "CalendarIntervals");
    settings.set("CalendarIntervals", platform::Dictionary{{"Intervals", std::move(entries)}, {"ASAP", false}});
    return settings;
}
