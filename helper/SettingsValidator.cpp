#include "helper/SettingsValidator.h"

#include "platform/Unicode.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleRanges.h"
#include "protocol/ScheduleSettings.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <span>
#include <string_view>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;

namespace {

using Finding = std::optional<SettingsFault>;
using Keys = SettingsValidator::UnknownKeys;
using Check = Finding (*)(std::string_view key, const PropertyList& value, Keys unknown);

// A key in an error is the sender's own text.
constexpr std::size_t longestKey = 200;

enum class Presence { Required, Optional };

struct Rule {
    std::string_view key;
    Check check;
    Presence presence = Presence::Optional;
};

SettingsFault wrongType(std::string_view key, std::string expected)
{
    return {BRVErrorWrongType, std::string(key), std::move(expected), {}};
}

std::optional<std::int64_t> wholeNumber(const PropertyList& value)
{
    if (!value.isNumber() || std::trunc(value.realValue()) != value.realValue())
        return std::nullopt;
    return value.integerValue();
}

Finding boolean(std::string_view key, const PropertyList& value, Keys)
{
    auto number = wholeNumber(value);
    if (!number || (*number != 0 && *number != 1))
        return wrongType(key, "boolean");
    return std::nullopt;
}

template <const ScheduleRange& range>
Finding integer(std::string_view key, const PropertyList& value, Keys)
{
    if (!value.isNumber())
        return wrongType(key, "integer");
    auto number = wholeNumber(value);
    if (!number || !range.contains(*number))
        return wrongType(key, "integer from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest));
    return std::nullopt;
}

// Types and keys first, for every key that is there; then the missing values.
Finding faultByRules(const Dictionary& record, std::span<const Rule> rules, Keys unknown)
{
    for (const auto& [key, value] : record) {
        const Rule* known = nullptr;
        for (const auto& rule : rules)
            known = rule.key == key ? &rule : known;
        if (!known && unknown == Keys::Ignored)
            continue;
        if (!known)
            return SettingsFault{BRVErrorUnknownKey, key, {}};
        if (auto fault = known->check(key, value, unknown))
            return fault;
    }
    for (const auto& rule : rules) {
        if (rule.presence == Presence::Required && !record.contains(rule.key))
            return SettingsFault{BRVErrorMissingValue, std::string(rule.key), {}};
    }
    return std::nullopt;
}

Finding dictionary(std::string_view key, const PropertyList& value, std::span<const Rule> rules, Keys unknown)
{
    return value.dictionary() ? faultByRules(*value.dictionary(), rules, unknown) : wrongType(key, "dictionary");
}

Finding mode(std::string_view key, const PropertyList& value, Keys)
{
    const auto* text = value.string();
    if (!text)
        return wrongType(key, "string");
    if (!isBackupsMode(*text))
        return wrongType(key, "WhenInactive, Interval or CalendarIntervals");
    return std::nullopt;
}

// What this sub-record holds is never read.
Finding whenInactive(std::string_view key, const PropertyList& value, Keys)
{
    return value.dictionary() ? Finding() : wrongType(key, "dictionary");
}

Finding interval(std::string_view key, const PropertyList& value, Keys unknown)
{
    static constexpr Rule rules[] = {
        {ScheduleKey::Minutes, integer<ScheduleRanges::intervalCount>},
        {ScheduleKey::Hours, integer<ScheduleRanges::intervalCount>},
        {ScheduleKey::Days, integer<ScheduleRanges::intervalCount>},
        {ScheduleKey::Weeks, integer<ScheduleRanges::intervalCount>},
    };
    if (auto fault = dictionary(key, value, rules, unknown))
        return fault;
    const auto isThere = [&](const Rule& unit) { return value.dictionary()->contains(unit.key); };
    return std::ranges::count_if(rules, isThere) > 1 ? Finding(wrongType(key, "dictionary of one unit")) : Finding();
}

Finding intervals(std::string_view key, const PropertyList& value, Keys unknown)
{
    static constexpr Rule rules[] = {
        {ScheduleKey::Weekday, integer<ScheduleRanges::weekday>},
        {ScheduleKey::Hour, integer<ScheduleRanges::hour>},
        {ScheduleKey::Minute, integer<ScheduleRanges::minute>},
        {ScheduleKey::Day, integer<ScheduleRanges::day>},
    };
    const auto* entries = value.array();
    if (!entries)
        return wrongType(key, "array");
    if (entries->size() > ScheduleRanges::maximumIntervals)
        return wrongType(key, "array of at most " + std::to_string(ScheduleRanges::maximumIntervals) + " entries");
    for (const auto& entry : *entries) {
        if (!entry.dictionary())
            return wrongType(key, "array of dictionaries");
        if (auto fault = faultByRules(*entry.dictionary(), rules, unknown))
            return fault;
    }
    return std::nullopt;
}

Finding calendarIntervals(std::string_view key, const PropertyList& value, Keys unknown)
{
    static constexpr Rule rules[] = {{ScheduleKey::Intervals, intervals}, {ScheduleKey::ASAP, boolean}};
    return dictionary(key, value, rules, unknown);
}

Finding suspendSettings(std::string_view key, const PropertyList& value, Keys unknown)
{
    static constexpr Rule rules[] = {
        {ScheduleKey::StartHour, integer<ScheduleRanges::hour>},
        {ScheduleKey::StartMinute, integer<ScheduleRanges::minute>},
        {ScheduleKey::EndHour, integer<ScheduleRanges::hour>},
        {ScheduleKey::EndMinute, integer<ScheduleRanges::minute>},
    };
    return dictionary(key, value, rules, unknown);
}

constexpr Rule settingsRules[] = {
    {ScheduleKey::Backups, boolean, Presence::Required},
    {ScheduleKey::BackupsMode, mode, Presence::Required},
    {BackupsModeWhenInactive, whenInactive},
    {BackupsModeInterval, interval},
    {BackupsModeCalendarIntervals, calendarIntervals},
    {ScheduleKey::Suspend, boolean, Presence::Required},
    {ScheduleKey::SuspendSettings, suspendSettings, Presence::Required},
    {ScheduleKey::DontRunWhenPassive, boolean, Presence::Required},
    {ScheduleKey::DontRunWithSleepPreventers, boolean, Presence::Required},
    {ScheduleKey::DontRunWhenNotNetworkWired, boolean, Presence::Required},
    {ScheduleKey::AllowBattery, boolean},
    {ScheduleKey::Snapshots, boolean},
};

Finding missing(std::string_view key)
{
    return SettingsFault{BRVErrorMissingValue, std::string(key), {}};
}

Finding faultInSuspendSettings(const Dictionary& suspend)
{
    for (auto key : {ScheduleKey::StartHour, ScheduleKey::StartMinute, ScheduleKey::EndHour, ScheduleKey::EndMinute}) {
        if (!suspend.contains(key))
            return missing(key);
    }
    return std::nullopt;
}

// Only the mode in force must be complete: the others may be carried along as they came.
Finding faultInModeInForce(const Dictionary& settings)
{
    const auto& name = *settings.stringForKey(ScheduleKey::BackupsMode);
    const auto* record = settings.dictionaryForKey(name);
    if (name == BackupsModeWhenInactive)
        return std::nullopt;
    if (!record || (name == BackupsModeInterval && record->empty()))
        return missing(name);
    if (name == BackupsModeCalendarIntervals && !record->contains(ScheduleKey::Intervals))
        return missing(ScheduleKey::Intervals);
    return std::nullopt;
}

} // namespace

platform::Error SettingsFault::error() const
{
    Dictionary userInfo{{"key", platform::shortened(key, longestKey)}};
    if (code == BRVErrorWrongType)
        userInfo.set("expected", expected);
    if (!path.empty())
        userInfo.set("path", path);
    return {BRVErrorDomain, code, std::move(userInfo), nullptr};
}

std::optional<SettingsFault> SettingsValidator::faultInSettings(const Dictionary& settings, UnknownKeys unknown)
{
    if (auto fault = faultByRules(settings, settingsRules, unknown))
        return fault;
    if (auto fault = faultInSuspendSettings(*settings.dictionaryForKey(ScheduleKey::SuspendSettings)))
        return fault;
    return faultInModeInForce(settings);
}

std::optional<SettingsFault> SettingsValidator::faultInAutoUpdates(const Dictionary& record, UnknownKeys unknown)
{
    static constexpr Rule rules[] = {{PayloadKey::Enabled, boolean, Presence::Required}};
    return faultByRules(record, rules, unknown);
}

std::optional<SettingsFault> SettingsValidator::faultInAllowWithoutPassword(const Dictionary& record)
{
    static constexpr Rule rules[] = {{PayloadKey::Allow, boolean, Presence::Required}};
    return faultByRules(record, rules, Keys::Refused);
}

} // namespace helper
