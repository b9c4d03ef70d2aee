#include "platform/TimeZone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>
#include <unicode/unistr.h>

namespace platform {

namespace {

constexpr double millisecondsPerSecond = 1000;

// Names that the library knows from before IANA's, some of them with another meaning than elsewhere.
constexpr std::array<std::string_view, 25> abbreviations{
    "ACT", "AET", "AGT", "ART", "AST", "BET", "BST", "CAT", "CNT", "CST", "CTT", "EAT", "ECT",
    "IET", "IST", "JST", "MIT", "NET", "NST", "PLT", "PNT", "PRT", "PST", "SST", "VST",
};

bool isForeignName(std::string_view name)
{
    return name.starts_with("SystemV/") || name == "Etc/Unknown"
        || std::find(abbreviations.begin(), abbreviations.end(), name) != abbreviations.end();
}

int offsetOf(const icu::TimeZoneRule& rule)
{
    return (rule.getRawOffset() + rule.getDSTSavings()) / static_cast<int>(millisecondsPerSecond);
}

TimeZone::Transition transitionOf(const icu::TimeZoneTransition& found)
{
    return {
        .at = static_cast<std::int64_t>(std::floor(found.getTime() / millisecondsPerSecond)),
        .offsetBefore = offsetOf(*found.getFrom()),
        .offsetAfter = offsetOf(*found.getTo()),
    };
}

} // namespace

struct TimeZone::Native {
    std::unique_ptr<const icu::BasicTimeZone> zone;
};

TimeZone::TimeZone(std::string name, std::shared_ptr<const Native> native)
    : _name(std::move(name)),
      _native(std::move(native))
{
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    if (name.empty() || name.size() > 200 || isForeignName(name))
        return std::nullopt;
    const auto id = icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
    // The library makes a zone of any name; only a name of its list is a zone of the system.
    UErrorCode status = U_ZERO_ERROR;
    UBool isListed = false;
    icu::UnicodeString canonical;
    icu::TimeZone::getCanonicalID(id, canonical, isListed, status);
    if (U_FAILURE(status) || !isListed)
        return std::nullopt;
    std::unique_ptr<icu::TimeZone> made(icu::TimeZone::createTimeZone(id));
    const auto* rules = dynamic_cast<const icu::BasicTimeZone*>(made.get());
    if (!rules)
        return std::nullopt;
    made.release();
    return TimeZone(std::string(name),
                    std::make_shared<const Native>(std::unique_ptr<const icu::BasicTimeZone>(rules)));
}

int TimeZone::offsetAt(std::int64_t instant) const
{
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t standard = 0;
    std::int32_t saving = 0;
    _native->zone->getOffset(static_cast<double>(instant) * millisecondsPerSecond, false, standard, saving, status);
    return U_SUCCESS(status) ? (standard + saving) / static_cast<int>(millisecondsPerSecond) : 0;
}

std::optional<TimeZone::Transition> TimeZone::nextTransition(std::int64_t instant) const
{
    // A change of the name or of the kind of time alone is none.
    icu::TimeZoneTransition found;
    double from = static_cast<double>(instant) * millisecondsPerSecond;
    while (_native->zone->getNextTransition(from, false, found)) {
        if (const auto transition = transitionOf(found); transition.offsetBefore != transition.offsetAfter)
            return transition;
        from = found.getTime();
    }
    return std::nullopt;
}

std::optional<TimeZone::Transition> TimeZone::lastTransition(std::int64_t instant) const
{
    icu::TimeZoneTransition found;
    double from = static_cast<double>(instant) * millisecondsPerSecond;
    bool inclusive = true;
    while (_native->zone->getPreviousTransition(from, inclusive, found)) {
        if (const auto transition = transitionOf(found); transition.offsetBefore != transition.offsetAfter)
            return transition;
        from = found.getTime();
        inclusive = false;
    }
    return std::nullopt;
}

} // namespace platform
