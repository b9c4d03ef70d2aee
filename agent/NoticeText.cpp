#include "agent/NoticeText.h"

#include "platform/Format.h"
#include "platform/Localization.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace agent {

using platform::localizedString;

namespace {

struct ReasonText {
    std::string_view name;
    const char* text;
};

// Names of things and circumstances, which fit into an enumeration.
constexpr std::array reasonTexts{
    ReasonText{"suspended", "the daily suspension of backups"},
    ReasonText{"battery", "battery power"},
    ReasonText{"passive", "nobody logged in at the computer, or a closed lid"},
    ReasonText{"sleepPreventers", "a program that keeps the computer awake"},
    ReasonText{"notWired", "no wired network"},
    ReasonText{"running", "another backup that is running"},
    ReasonText{"maintenance", "an update or the uninstallation"},
    ReasonText{"noProgram", "no backup program, or one that is not there"},
    ReasonText{"asleep", "sleep of the computer"},
};

std::string textOf(const char* format, std::initializer_list<platform::FormatArgument> arguments)
{
    return platform::formatString(localizedString(format), arguments).value_or(std::string());
}

// " The reason: battery power, no wired network."; empty where none is known.
std::string sentenceOf(const std::vector<std::string>& reasons)
{
    std::string list;
    for (const auto& each : reasonTexts) {
        if (std::ranges::find(reasons, each.name) == reasons.end())
            continue;
        const auto text = localizedString(each.text);
        list = list.empty() ? text : textOf("%@, %@", {list, text});
    }
    return list.empty() ? list : " " + textOf("The reason: %@.", {list});
}

} // namespace

NoticeText NoticeText::of(const Notice& notice)
{
    switch (notice.cause) {
    case Cause::Failing:
        return {localizedString("Backups are failing."),
                textOf("The last %ld backups failed.", {notice.count})
                    + (notice.failure.empty() ? "" : " " + textOf("The journal says: %@", {notice.failure}))};
    case Cause::Missed:
        return {localizedString("Backups are being missed."),
                textOf("The last %ld scheduled backups were not made.", {notice.count}) + sentenceOf(notice.reasons)};
    case Cause::Stale:
        return {localizedString("There is no recent backup."),
                textOf("For %ld days no backup has succeeded.", {notice.count}) + sentenceOf(notice.reasons)};
    }
    return {};
}

} // namespace agent
