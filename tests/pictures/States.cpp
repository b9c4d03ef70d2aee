#include "tests/pictures/States.h"

#include "messaging/ErrorCodes.h"
#include "platform/Localization.h"
#include "tests/pictures/Photographer.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedBackgroundItem.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/shell/support/EditorTest.h"
#include "update/BRUpdateController.h"

using platform::Array;
using platform::Dictionary;
using platform::localizedString;

namespace {

ScheduleSettings inMode(const char* mode)
{
    return completeRecordWith("BackupsMode", mode);
}

Dictionary entry(int weekday, int hour, int minute)
{
    return {{"Weekday", weekday}, {"Hour", hour}, {"Minute", minute}};
}

ScheduleSettings atTimesOfDay()
{
    ScheduleSettings record = inMode("CalendarIntervals");
    const Dictionary everyDay{{"Hour", 12}, {"Minute", 30}};
    record.set(
        "CalendarIntervals",
        Dictionary{{"Intervals", Array{everyDay, entry(1, 9, 0), entry(3, 21, 15), entry(5, 17, 30), entry(7, 3, 0)}},
                   {"ASAP", true}});
    return record;
}

platform::Error messagerError(std::int64_t code)
{
    return {ZRKMessagerErrorDomain, code, {{"message", 1}, {"service", "com.zerkolin.brevane.scheduler"}}, nullptr};
}

// What a launch shows that cannot reach the scheduler helper.
void photographDiagnosis(Photographer& photographer, EditorTest& editor)
{
    photographer.photographNextAlert();
    user::answerNextAlert(0);
    editor.controller->displayAlertWithTitle(localizedString("Could not get settings."),
                                             messagerError(ZRKMessagerErrorServiceUnavailable), false);
}

void whenInactive(Photographer& photographer)
{
    const EditorTest editor(inMode("WhenInactive"));
    photographer.photographWindow();
}

void interval(Photographer& photographer)
{
    const EditorTest editor(completeRecord());
    photographer.photographWindow();
}

void timesOfDay(Photographer& photographer)
{
    const EditorTest editor(atTimesOfDay());
    photographer.photographWindow();
}

void advanced(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.user.click("advancedSettingsButton");
    editor.user.click("dontRunWithSleepPreventersCheckBox");
    photographer.photographWindow();
}

void off(Photographer& photographer)
{
    const EditorTest editor(completeRecordWith("Backups", false));
    photographer.photographWindow();
}

void applied(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.user.click("suspendCheckBox");
    editor.apply();
    photographer.photographSheet();
}

void appliedBesideTheSystem(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", "com.apple.TimeMachine", true);
    editor.user.click("suspendCheckBox");
    editor.apply();
    photographer.photographSheet();
}

void alreadyApplied(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.apply();
    photographer.photographSheet();
}

void nothingScheduled(Photographer& photographer)
{
    EditorTest editor(completeRecordWith("Snapshots", false));
    editor.user.click("backupsCheckBox");
    editor.apply();
    photographer.photographSheet();
}

void onBattery(Photographer& photographer)
{
    EditorTest editor(completeRecordWith("AllowBattery", false));
    editor.user.click("allowBatteryCheckBox");
    photographer.photographSheet();
}

void notInstalled(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::system::removeFile("/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist");
    photographDiagnosis(photographer, editor);
}

void disabled(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::background::setStatus(platform::BackgroundItemStatus::Enabled);
    photographDiagnosis(photographer, editor);
}

void awaitingApproval(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::background::setStatus(platform::BackgroundItemStatus::RequiresApproval);
    photographDiagnosis(photographer, editor);
}

void unreachable(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerWith(std::unexpected(platform::ServiceError::Interrupted));
    editor.user.click("suspendCheckBox");
    editor.apply();
    photographer.photographSheet();
}

// A check for updates with this answer of the scheduler helper; this button of its alert is pressed.
void photographCheck(Photographer& photographer, EditorTest& editor, const platform::ServiceReply& reply, int button)
{
    editor.scheduler.answerMessage(26, reply);
    photographer.photographNextAlert();
    user::answerNextAlert(button);
    editor.user.clickMenuItem("checkUpdatesMenuItem");
    user::runEventsUntil([&] { return editor.user.menuItem("checkUpdatesMenuItem")->isEnabled(); }, 10000);
}

platform::Error updaterError(std::int64_t code)
{
    return {ZRKUpdaterErrorDomain, code, {}, nullptr};
}

platform::ServiceReply newVersion()
{
    return replyWith(Dictionary{{"HumanVersion", "2.1"}});
}

void newVersionAvailable(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    photographCheck(photographer, editor, newVersion(), 2);
}

void upToDate(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    photographCheck(photographer, editor, replyWithError(updaterError(ZRKUpdaterErrorUpToDate)), 0);
}

void upToDateWithOffer(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    photographCheck(photographer, editor, replyWithError(updaterError(ZRKUpdaterErrorUpToDate)), 0);
}

void checkFailed(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    photographCheck(photographer, editor, replyWithError(updaterError(ZRKUpdaterErrorUntrustedServer)), 0);
}

void updateFailed(Photographer& photographer)
{
    const EditorTest editor(completeRecord());
    photographer.photographNextAlert();
    user::answerNextAlert(0);
    BRUpdateController::displayUpdateAlertWithError(
        {ZRKInstallerPackageErrorDomain, ZRKInstallerPackageErrorInvalidSignature, {}, nullptr});
}

void askAboutUpdates(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    photographer.photographNextAlert();
    user::answerNextAlert(1);
    editor.controller->applicationShouldTerminate();
}

void askToUninstall(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    photographer.photographNextAlert();
    user::answerNextAlert(1);
    editor.user.clickMenuItem("uninstallMenuItem");
}

void preferences(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::authorization::setDefinition("com.zerkolin.brevane.settings.modify-1",
                                           {{"rule", Array{"authenticate-admin"}}});
    editor.user.clickMenuItem("preferencesMenuItem");
    photographer.photographWindow("preferencesWindow");
}

void about(Photographer& photographer)
{
    EditorTest editor(completeRecord());
    scripted::system::setBundleVersion("1.0.0.1");
    editor.user.clickMenuItem("aboutMenuItem");
    photographer.photographWindow("aboutPanel");
}

} // namespace

const std::vector<State>& states()
{
    static const std::vector<State> all{
        {"when-inactive", whenInactive},
        {"interval", interval},
        {"times-of-day", timesOfDay},
        {"advanced", advanced},
        {"off", off},
        {"applied", applied},
        {"applied-beside-the-system", appliedBesideTheSystem},
        {"already-applied", alreadyApplied},
        {"nothing-scheduled", nothingScheduled},
        {"on-battery", onBattery},
        {"not-installed", notInstalled},
        {"disabled", disabled},
        {"awaiting-approval", awaitingApproval},
        {"unreachable", unreachable},
        {"new-version", newVersionAvailable},
        {"up-to-date", upToDate},
        {"up-to-date-with-offer", upToDateWithOffer},
        {"check-failed", checkFailed},
        {"update-failed", updateFailed},
        {"ask-about-updates", askAboutUpdates},
        {"ask-to-uninstall", askToUninstall},
        {"preferences", preferences},
        {"about", about},
    };
    return all;
}
