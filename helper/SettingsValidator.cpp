#include "helper/SettingsValidator.h"

#include "messaging/ZRKError.h"

#include <cmath>
#include <initializer_list>
#include <span>
#include <string_view>

using platform::Dictionary;
using platform::PropertyList;

namespace {

using Fault = std::optional<SettingsFault>;
using Check = Fault (*)(std::string_view key, const PropertyList& value);

enum class Presence { Required, Optional };

struct Rule {
    std::string_view key;
    Check check;
    Presence presence = Presence::Optional;
};

SettingsFault wrongType(std::string_view key, std::string expected)
{
    return {BRVErrorWrongType, std::string(key), std::move(expected)};
}

std::optional<std::int64_t> wholeNumber(const PropertyList& value)
{
    if (!value.isNumber() || std::trunc(value.realValue()) != value.realValue())
        return std::nullopt;
    return value.integerValue();
}

Fault boolean(std::string_view key, const PropertyList& value)
{
    auto number = wholeNumber(value);
    if (!number || (*number != 0 && *number != 1))
        return wrongType(key, "boolean");
    return std::nullopt;
}

template <std::int64_t lowest, std::int64_t highest>
Fault integer(std::string_view key, const PropertyList& value)
{
    if (!value.isNumber())
        return wrongType(key, "integer");
    auto number = wholeNumber(value);
    if (!number || *number < lowest || *number > highest)
        return wrongType(key, "integer from " + std::to_string(lowest) + " to " + std::to_string(highest));
    return std::nullopt;
}

// Types and keys first, for every key that is there; then the missing values.
Fault faultByRules(const Dictionary& record, std::span<const Rule> rules)
{
    for (const auto& [key, value] : record) {
        const Rule* known = nullptr;
        for (const auto& rule : rules)
            known = rule.key == key ? &rule : known;
        if (!known)
            return SettingsFault{BRVErrorUnknownKey, key, {}};
        if (auto fault = known->check(key, value))
            return fault;
    }
    for (const auto& rule : rules) {
        if (rule.presence == Presence::Required && !record.contains(rule.key))
            return SettingsFault{BRVErrorMissingValue, std::string(rule.key), {}};
    }
    return std::nullopt;
}

Fault dictionary(std::string_view key, const PropertyList& value, std::span<const Rule> rules)
{
    return value.dictionary() ? faultByRules(*value.dictionary(), rules) : wrongType(key, "dictionary");
}

Fault mode(std::string_view key, const PropertyList& value)
{
    const auto* text = value.string();
    if (!text)
        return wrongType(key, "string");
    if (*text != "WhenInactive" && *text != "Interval" && *text != "CalendarIntervals")
        return wrongType(key, "WhenInactive, Interval or CalendarIntervals");
    return std::nullopt;
}

// What this sub-record holds is never read.
Fault whenInactive(std::string_view key, const PropertyList& value)
{
    return value.dictionary() ? Fault() : wrongType(key, "dictionary");
}

Fault interval(std::string_view key, const PropertyList& value)
{
    static constexpr Rule rules[] = {
        {"Minutes", integer<1, 999>},
        {"Hours", integer<1, 999>},
        {"Days", integer<1, 999>},
        {"Weeks", integer<1, 999>},
    };
    if (auto fault = dictionary(key, value, rules))
        return fault;
    return value.dictionary()->size() > 1 ? Fault(wrongType(key, "dictionary of one unit")) : Fault();
}

Fault intervals(std::string_view key, const PropertyList& value)
{
    static constexpr Rule rules[] = {
        {"Weekday", integer<0, 7>},
        {"Hour", integer<0, 23>},
        {"Minute", integer<0, 59>},
        {"Day", integer<1, 31>},
    };
    const auto* entries = value.array();
    if (!entries)
        return wrongType(key, "array");
    if (entries->size() > SettingsValidator::maximumIntervals)
        return wrongType(key, "array of at most " + std::to_string(SettingsValidator::maximumIntervals) + " entries");
    for (const auto& entry : *entries) {
        if (!entry.dictionary())
            return wrongType(key, "array of dictionaries");
        if (auto fault = faultByRules(*entry.dictionary(), rules))
            return fault;
    }
    return std::nullopt;
}

Fault calendarIntervals(std::string_view key, const PropertyList& value)
{
    static constexpr Rule rules[] = {{"Intervals", intervals}, {"ASAP", boolean}};
    return dictionary(key, value, rules);
}

Fault suspendSettings(std::string_view key, const PropertyList& value)
{
    static constexpr Rule rules[] = {
        {"StartHour", integer<0, 23>},
        {"StartMinute", integer<0, 59>},
        {"EndHour", integer<0, 23>},
        {"EndMinute", integer<0, 59>},
    };
    return dictionary(key, value, rules);
}

constexpr Rule settingsRules[] = {
    {"Backups", boolean, Presence::Required},
    {"BackupsMode", mode, Presence::Required},
    {"WhenInactive", whenInactive},
    {"Interval", interval},
    {"CalendarIntervals", calendarIntervals},
    {"Suspend", boolean, Presence::Required},
    {"SuspendSettings", suspendSettings, Presence::Required},
    {"DontRunWhenPassive", boolean, Presence::Required},
    {"DontRunWithSleepPreventers", boolean, Presence::Required},
    {"DontRunWhenNotNetworkWired", boolean, Presence::Required},
    {"AllowBattery", boolean},
    {"Snapshots", boolean},
};

Fault missing(std::string_view key)
{
    return SettingsFault{BRVErrorMissingValue, std::string(key), {}};
}

Fault faultInSuspendSettings(const Dictionary& suspend)
{
    for (auto key : {"StartHour", "StartMinute", "EndHour", "EndMinute"}) {
        if (!suspend.contains(key))
            return missing(key);
    }
    return std::nullopt;
}

// Only the mode in force must be complete: the others may be carried along as they came.
Fault faultInModeInForce(const Dictionary& settings)
{
    const auto& name = *settings.stringForKey("BackupsMode");
    const auto* record = settings.dictionaryForKey(name);
    if (name == "WhenInactive")
        return std::nullopt;
    if (!record || (name == "Interval" && record->empty()))
        return missing(name);
    if (name == "CalendarIntervals" && !record->contains("Intervals"))
        return missing("Intervals");
    return std::nullopt;
}

} // namespace

platform::Error SettingsFault::error() const
{
    Dictionary userInfo{{"key", key}};
    if (code == BRVErrorWrongType)
        userInfo.set("expected", expected);
    return ZRKError::errorWithDomain(BRVErrorDomain, code, std::move(userInfo));
}

std::optional<SettingsFault> SettingsValidator::faultInSettings(const Dictionary& settings)
{
    if (auto fault = faultByRules(settings, settingsRules))
        return fault;
    if (auto fault = faultInSuspendSettings(*settings.dictionaryForKey("SuspendSettings")))
        return fault;
    return faultInModeInForce(settings);
}

std::optional<SettingsFault> SettingsValidator::faultInAutoUpdates(const Dictionary& record)
{
    static constexpr Rule rules[] = {{"Enabled", boolean, Presence::Required}};
    return faultByRules(record, rules);
}

std::optional<SettingsFault> SettingsValidator::faultInAllowWithoutPassword(const Dictionary& record)
{
    static constexpr Rule rules[] = {{"Allow", boolean, Presence::Required}};
    return faultByRules(record, rules);
}
