#include "schedule/model/ApplyAlert.h"
#include "schedule/model/BatteryNote.h"

#include <doctest/doctest.h>
#include <string>
#include <utility>

using platform::PropertyList;

namespace {

std::pair<std::string, std::string> texts(ApplyAlert alert)
{
    const ApplyAlertTexts found = textsOf(alert);
    return {found.title, found.message};
}

} // namespace

TEST_CASE("a record is sent unless it equals the current one")
{
    const ScheduleSettings record{{"Backups", true}, {"Suspend", 0}};
    CHECK(isAlreadyApplied(record, {{"Suspend", false}, {"Backups", 1}}));
    CHECK_FALSE(isAlreadyApplied(record, {{"Backups", true}, {"Suspend", true}}));
    CHECK_FALSE(isAlreadyApplied(std::nullopt, record));
    CHECK_FALSE(isAlreadyApplied(std::nullopt, {}));
    ScheduleSettings disabled = record;
    disabled.set("Disabled", false);
    CHECK_FALSE(isAlreadyApplied(disabled, record));
}

TEST_CASE("a schedule is enforced when it backs up or makes snapshots and is not disabled")
{
    const auto after = [](bool disabled, bool backups, bool snapshots) {
        return alertAfterApplying({{"Disabled", disabled}, {"Backups", backups}, {"Snapshots", snapshots}});
    };
    CHECK(after(false, true, true) == ApplyAlert::Enforced);
    CHECK(after(false, true, false) == ApplyAlert::Enforced);
    CHECK(after(false, false, true) == ApplyAlert::Enforced);
    CHECK(after(false, false, false) == ApplyAlert::NothingScheduled);
    CHECK(after(true, true, true) == ApplyAlert::NothingScheduled);
    CHECK(alertAfterApplying({{"Backups", true}}) == ApplyAlert::Enforced);
    CHECK(alertAfterApplying({}) == ApplyAlert::NothingScheduled);
}

TEST_CASE("a failure is told unless the user dismissed the authentication")
{
    CHECK(alertAfterFailingToApply(true) == ApplyAlert::None);
    CHECK(alertAfterFailingToApply(false) == ApplyAlert::Failed);
}

TEST_CASE("each outcome has its texts")
{
    using Texts = std::pair<std::string, std::string>;
    CHECK(texts(ApplyAlert::AlreadyApplied)
          == Texts{"Settings already applied.",
                   "The settings you are attempting to apply are already the ones installed in your system."});
    CHECK(texts(ApplyAlert::Enforced)
          == Texts{"Settings applied successfully.", "Brevane will now enforce the new scheduling."});
    CHECK(texts(ApplyAlert::NothingScheduled)
          == Texts{"Settings applied successfully.", "Brevane will not schedule backups anymore."});
    CHECK(texts(ApplyAlert::Failed) == Texts{"Failed to apply settings.", ""});
    CHECK(texts(ApplyAlert::None) == Texts{"", ""});
}

TEST_CASE("the system's own backups are of interest as long as something is scheduled")
{
    CHECK(checksSystemScheduler(ApplyAlert::AlreadyApplied));
    CHECK(checksSystemScheduler(ApplyAlert::Enforced));
    CHECK_FALSE(checksSystemScheduler(ApplyAlert::NothingScheduled));
    CHECK_FALSE(checksSystemScheduler(ApplyAlert::Failed));
    CHECK_FALSE(checksSystemScheduler(ApplyAlert::None));
}

TEST_CASE("the battery note follows a box that is not off, unless the system's setting is known to be fine")
{
    constexpr EditorCapabilities catalina{.batterySetting = true};
    CHECK(needsBatteryNote(false, catalina, std::nullopt));
    CHECK(needsBatteryNote(false, catalina, true));
    CHECK_FALSE(needsBatteryNote(false, catalina, false));
    CHECK_FALSE(needsBatteryNote(true, catalina, std::nullopt));
    CHECK_FALSE(needsBatteryNote(false, {.battery = true}, std::nullopt));
}
