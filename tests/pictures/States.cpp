#include "tests/pictures/States.h"

#include "platform/Localization.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"
#include "protocol/ScheduleRanges.h"
#include "scheduling/InstantDate.h"
#include "tests/pictures/Onlooker.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedBackgroundItem.h"
#include "tests/platform/ScriptedBackupFacility.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedVolumes.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/FirstStartTest.h"
#include "tests/shell/support/OfferedPrograms.h"
#include "tests/snapshots/support/BrowserTest.h"
#include "update/BRUpdateController.h"

#include <cerrno>

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
void showDiagnosis(Onlooker& onlooker, EditorTest& editor)
{
    onlooker.lookAtNextAlert();
    user::answerNextAlert(0);
    editor.controller->displayAlertWithTitle(localizedString("Could not get settings."),
                                             messagerError(ZRKMessagerErrorServiceUnavailable), false);
}

void whenInactive(Onlooker& onlooker)
{
    const EditorTest editor(inMode("WhenInactive"));
    onlooker.lookAtWindow();
}

void interval(Onlooker& onlooker)
{
    const EditorTest editor(completeRecord());
    onlooker.lookAtWindow();
}

void timesOfDay(Onlooker& onlooker)
{
    const EditorTest editor(atTimesOfDay());
    onlooker.lookAtWindow();
}

// More than a schedule can hold.
void tooManyTimes(Onlooker& onlooker)
{
    ScheduleSettings record = inMode("CalendarIntervals");
    const Array entries(ScheduleRanges::maximumIntervals + 1, entry(1, 9, 0));
    record.set("CalendarIntervals", Dictionary{{"Intervals", entries}, {"ASAP", true}});
    const EditorTest editor(std::move(record));
    onlooker.lookAtWindow();
}

void advanced(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.user.click("advancedSettingsButton");
    editor.user.click("dontRunWithSleepPreventersCheckBox");
    onlooker.lookAtWindow();
}

void off(Onlooker& onlooker)
{
    const EditorTest editor(completeRecordWith("Backups", false));
    onlooker.lookAtWindow();
}

void applied(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.user.click("suspendCheckBox");
    editor.apply();
    onlooker.lookAtSheet();
}

void appliedBesideTheSystem(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", "com.apple.TimeMachine", true);
    editor.user.click("suspendCheckBox");
    editor.apply();
    onlooker.lookAtSheet();
}

void alreadyApplied(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.apply();
    onlooker.lookAtSheet();
}

void nothingScheduled(Onlooker& onlooker)
{
    EditorTest editor(completeRecordWith("Snapshots", false));
    editor.user.click("backupsCheckBox");
    editor.apply();
    onlooker.lookAtSheet();
}

void onBattery(Onlooker& onlooker)
{
    EditorTest editor(completeRecordWith("AllowBattery", false));
    editor.user.click("allowBatteryCheckBox");
    onlooker.lookAtSheet();
}

void notInstalled(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::system::removeFile("/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist");
    showDiagnosis(onlooker, editor);
}

void disabled(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::background::setStatus(platform::BackgroundItemStatus::Enabled);
    showDiagnosis(onlooker, editor);
}

void awaitingApproval(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::background::setStatus(platform::BackgroundItemStatus::RequiresApproval);
    showDiagnosis(onlooker, editor);
}

void unreachable(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerWith(std::unexpected(platform::ServiceError::Interrupted));
    editor.user.click("suspendCheckBox");
    editor.apply();
    onlooker.lookAtSheet();
}

// A check for updates with this answer of the scheduler helper; this button of its alert is pressed.
void showCheck(Onlooker& onlooker, EditorTest& editor, const platform::ServiceReply& reply, int button)
{
    editor.scheduler.answerMessage(26, reply);
    onlooker.lookAtNextAlert();
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

void newVersionAvailable(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    showCheck(onlooker, editor, newVersion(), 2);
}

void upToDate(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    showCheck(onlooker, editor, replyWithError(updaterError(ZRKUpdaterErrorUpToDate)), 0);
}

void upToDateWithOffer(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    showCheck(onlooker, editor, replyWithError(updaterError(ZRKUpdaterErrorUpToDate)), 0);
}

void checkFailed(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    showCheck(onlooker, editor, replyWithError(updaterError(ZRKUpdaterErrorUntrustedServer)), 0);
}

void updateFailed(Onlooker& onlooker)
{
    const EditorTest editor(completeRecord());
    onlooker.lookAtNextAlert();
    user::answerNextAlert(0);
    BRUpdateController::displayUpdateAlertWithError(
        {ZRKInstallerPackageErrorDomain, ZRKInstallerPackageErrorInvalidSignature, {}, nullptr});
}

void askAboutUpdates(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    onlooker.lookAtNextAlert();
    user::answerNextAlert(1);
    editor.controller->applicationShouldTerminate();
}

void askToUninstall(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    onlooker.lookAtNextAlert();
    user::answerNextAlert(1);
    editor.user.clickMenuItem("uninstallMenuItem");
}

void preferences(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::authorization::setDefinition("com.zerkolin.brevane.settings.modify-1",
                                           {{"rule", Array{"authenticate-admin"}}});
    editor.user.clickMenuItem("preferencesMenuItem");
    onlooker.lookAtWindow("preferencesWindow");
}

void about(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::system::setBundleVersion("1.0.0.1");
    editor.user.clickMenuItem("aboutMenuItem");
    onlooker.lookAtWindow("aboutPanel");
}

// As the log tool prints it.
std::string logOfAMorning()
{
    struct Line {
        const char* time;
        const char* subsystem;
        const char* sender;
        const char* type;
        const char* message;
    };
    constexpr const char* product = "com.zerkolin.brevane";
    constexpr const char* timeMachine = "com.apple.TimeMachine";
    constexpr const char* scheduler = "/Library/Brevane/com.zerkolin.brevane.scheduler";
    constexpr const char* application = "/Applications/Brevane.app/Contents/MacOS/Brevane";
    constexpr const char* daemon = "/System/Library/CoreServices/backupd.bundle/Contents/Resources/backupd";
    std::string text = "[";
    for (const Line& line : {
             Line{"09:00:00", product, scheduler, "Info", "Running version 1.0.0.1."},
             Line{"09:00:04", product, application, "Info", "Running version 1.0.0.1."},
             Line{"10:31:37", timeMachine, daemon, "Default", "Starting automatic backup"},
             Line{"10:31:39", timeMachine, daemon, "Debug", "Mounted the backup volume"},
             Line{"10:31:52", timeMachine, daemon, "Error", "The backup volume is nearly full"},
             Line{"10:34:08", timeMachine, daemon, "Default", "Backup completed"},
             Line{"11:12:20", product, application, "Error", "Connection became invalid with server."},
         }) {
        text += text.size() > 1 ? "," : "";
        text += std::string(R"({"timestamp":"2026-11-20 )") + line.time + R"(.000000+0000","subsystem":")"
            + line.subsystem + R"(","category":"main","processImagePath":")" + line.sender
            + R"(","processID":71,"messageType":")" + line.type + R"(","eventMessage":")" + line.message + R"("})";
    }
    return text + "]";
}

void settingsNotOpened(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::background::setSettingsOpen(false);
    editor.controller->finishDisplayAlertWithResponse(1000, false, true);
    onlooker.lookAtSheet();
}

void notUninstalled(Onlooker& onlooker)
{
    const EditorTest editor(completeRecord());
    onlooker.lookAtNextAlert();
    user::answerNextAlert(0);
    editor.controller->didFailToUninstallWithError(messagerError(ZRKMessagerErrorServiceDisappeared));
}

void console(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::process::setOutput({logOfAMorning()});
    editor.user.clickMenuItem("consoleMenuItem");
    const WindowUser console("consoleWindow");
    user::runEventsUntil([&] { return console.isEnabled("consoleRefreshButton"); }, 20000);
    onlooker.lookAtWindow("consoleWindow");
}

void openSnapshots(EditorTest& editor, const scripted::snapshots::Snapshots& snapshots)
{
    scripted::volumes::add({.path = "/", .name = "Linux"});
    scripted::volumes::add({.path = "/media/disk", .name = "Backup Disk", .icon = "drive-removable-media-usb"});
    scripted::snapshots::set("/", snapshots);
    editor.user.clickMenuItem("localSnapshotsMenuItem");
}

void localSnapshots(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    auto snapshots =
        snapshotsNamed({"2026-11-21-070315", "2026-11-21-070415", "before the upgrade", "2026-11-21-070615"});
    snapshots.sizes = {{256, 7'654'321}, {257, 345'678'901}, {259, 12'345'678'901}};
    openSnapshots(editor, snapshots);
    onlooker.lookAtWindow("localSnapshotsWindow");
}

void noSnapshots(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openSnapshots(editor, {});
    onlooker.lookAtWindow("localSnapshotsWindow");
}

void noVolume(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.user.clickMenuItem("localSnapshotsMenuItem");
    onlooker.lookAtWindow("localSnapshotsWindow");
}

void noFullDiskAccess(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openSnapshots(editor, {.answers = {}, .sizes = {}, .refusal = EPERM});
    onlooker.lookAtWindow("localSnapshotsWindow");
}

void listAsAdministrator(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::snapshots::setMissingAccess(platform::SnapshotAccess::Administrator);
    openSnapshots(editor, {.answers = {}, .sizes = {}, .refusal = EPERM});
    onlooker.lookAtWindow("localSnapshotsWindow");
}

void aboutFullDiskAccess(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openSnapshots(editor, {.answers = {}, .sizes = {}, .refusal = EPERM});
    WindowUser("localSnapshotsWindow").click("fullDiskAccessButton");
    onlooker.lookAtSheet("localSnapshotsWindow");
}

// The window Activity, of a helper with this status.
void showActivity(Onlooker& onlooker, EditorTest& editor, const Dictionary& status)
{
    editor.scheduler.setStatus(status);
    editor.user.clickMenuItem("activityMenuItem");
    const WindowUser activity("activityWindow");
    user::runEventsUntil([&] { return !activity.sees("activitySpinner"); }, 20000);
    onlooker.lookAtWindow("activityWindow");
}

platform::Date newYear(int hours, int minutes = 0)
{
    return {788'918'400.0 + 3600.0 * hours + 60.0 * minutes}; // since its first moment in UTC
}

Dictionary entryOfJournal(platform::Date at, const char* event, const Dictionary& more)
{
    Dictionary entry{{"At", at}, {"Event", event}, {"Text", "The backup failed: its program ended with status 2."}};
    for (const auto& [key, value] : more)
        entry.set(key, value);
    return entry;
}

// Of a machine on which much has happened, the day before a change of clocks.
Dictionary eventfulStatus()
{
    return {{"Now", newYear(0)},
            {"Zone", "UTC"},
            {"State", "blocked"},
            {"Due", newYear(-1)},
            {"Reasons", Array{"suspended", "battery"}},
            {"LastStart", newYear(-15)},
            {"LastEnd", newYear(-15, 4)},
            {"LastSucceeded", newYear(-40)},
            {"Failures", 2},
            {"Program", "Borg"},
            {"Upcoming",
             Array{Dictionary{{"At", newYear(3)}, {"Suspended", true}}, Dictionary{{"At", newYear(9)}},
                   Dictionary{{"At", newYear(27)}, {"Suspended", true}, {"Repeated", true}},
                   Dictionary{{"At", newYear(33)}}, Dictionary{{"At", newYear(51)}, {"Shifted", true}},
                   Dictionary{{"At", newYear(240)}}}},
            {"Journal",
             Array{entryOfJournal(newYear(-1), "blocked", {{"Reasons", Array{"suspended", "battery"}}}),
                   entryOfJournal(newYear(-7, 10), "missed", {{"Due", newYear(-7)}, {"Reasons", Array{"asleep"}}}),
                   entryOfJournal(newYear(-15, 4), "end", {{"Succeeded", false}}),
                   entryOfJournal(newYear(-15), "start", {{"Due", newYear(-15)}}),
                   entryOfJournal(newYear(-40), "end", {{"Succeeded", true}}),
                   entryOfJournal(newYear(-40, -12), "start", {}),
                   entryOfJournal(newYear(-60), "missed",
                                  {{"Due", newYear(-60)}, {"Reasons", Array{"passive", "notWired"}}, {"Count", 7}})}}};
}

void activity(Onlooker& onlooker)
{
    ScheduleSettings record = atTimesOfDay();
    record.set("CalendarIntervals", Dictionary{{"Intervals", Array{Dictionary{{"Hour", 3}}}}, {"ASAP", false}});
    EditorTest editor(std::move(record));
    showActivity(onlooker, editor, eventfulStatus());
}

void activityWithEdits(Onlooker& onlooker)
{
    EditorTest editor(completeRecordWith("BackupsMode", "WhenInactive"));
    editor.user.click("advancedSettingsButton");
    editor.user.click("suspendCheckBox");
    editor.user.choose("operationModePopUp", 1);
    showActivity(onlooker, editor, eventfulStatus());
}

void activityWithoutBackup(Onlooker& onlooker)
{
    EditorTest editor(inMode("WhenInactive"));
    showActivity(onlooker, editor, {{"Now", newYear(0)}, {"Zone", "UTC"}, {"State", "waiting"}});
}

void activityWithOlderHelper(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.refuseMessage(5, messagerError(ZRKMessagerErrorDeserializeMessage));
    showActivity(onlooker, editor, {});
}

void backupNotStarted(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setStatus(eventfulStatus());
    editor.scheduler.refuseMessage(3, {BRVErrorDomain, BRVErrorMissingValue, {{"key", "Program"}}, nullptr});
    editor.user.clickMenuItem("activityMenuItem");
    WindowUser activity("activityWindow");
    user::runEventsUntil([&] { return activity.isEnabled("backUpNowButton"); }, 20000);
    activity.click("backUpNowButton");
    user::runEventsUntil([] { return user::currentAlert().has_value(); }, 20000);
    onlooker.lookAtSheet("activityWindow");
}

Dictionary borgToDisk()
{
    return {{"Program", "borg"},
            {"Fields",
             Dictionary{{"Folders", Array{"/home/anna", "/etc"}},
                        {"Repository", "/media/anna/Backup Disk/laptop"},
                        {"Excludes", Array{"/home/anna/.cache", "*.iso"}}}},
            {"PreventSleep", true}};
}

WindowUser openBackupProgram(EditorTest& editor, const Dictionary& reply)
{
    editor.scheduler.setBackupProgram(reply);
    editor.user.clickMenuItem("backupProgramMenuItem");
    user::runEvents();
    return WindowUser("backupProgramWindow");
}

void backupProgram(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openBackupProgram(editor, offerOfPrograms({"borg", "restic", "service"}, borgToDisk()));
    onlooker.lookAtWindow("backupProgramWindow");
}

void noBackupProgram(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openBackupProgram(editor, offerOfPrograms({"service"}));
    onlooker.lookAtWindow("backupProgramWindow");
}

void noBackupProgramChosen(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openBackupProgram(editor, offerOfPrograms({"borg", "service"}));
    onlooker.lookAtWindow("backupProgramWindow");
}

void backupProgramNotSetUp(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    auto window = openBackupProgram(editor, offerWithoutSettings("rsnapshot", "/etc/rsnapshot.conf"));
    window.choose("programPopUp", 1);
    onlooker.lookAtWindow("backupProgramWindow");
}

void backupProgramService(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    openBackupProgram(editor,
                      offerOfPrograms({"borg", "service"},
                                      {{"Program", "service"}, {"Fields", Dictionary{{"Unit", "backup.service"}}}}));
    onlooker.lookAtWindow("backupProgramWindow");
}

// A choice that the scheduler helper refuses, of the program with the most fields.
void backupProgramRefused(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    auto choice = borgToDisk();
    choice.set("Program", "restic");
    auto window = openBackupProgram(editor, offerOfPrograms({"borg", "restic"}, choice));
    editor.scheduler.refuseMessage(
        12,
        {BRVErrorDomain,
         BRVErrorWrongType,
         {{"key", "Repository"}, {"expected", BackupFieldExpectation::OfAdministrator}, {"path", "/home/anna"}},
         nullptr});
    window.replaceText("secretFileField", "/root/restic-password");
    window.replaceText("destinationField", "/home/anna/backups");
    window.click("chooseProgramButton");
    user::runEvents();
    onlooker.lookAtWindow("backupProgramWindow");
}

void backupProgramFailed(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerMessage(3, replyWith(Dictionary{{"Applied", true}}));
    const auto start = scheduling::dateOf(1'790'000'000);
    const auto end = scheduling::dateOf(1'790'000'012);
    const Dictionary ended{{"At", end},
                           {"Event", "end"},
                           {"Succeeded", false},
                           {"Text", "The backup failed: its program ended with status 2."}};
    editor.scheduler.answerMessage(
        5, replyWith(Dictionary{{"LastStart", start}, {"LastEnd", end}, {"Journal", Array{ended}}}));
    auto window = openBackupProgram(editor, offerOfPrograms({"borg"}, borgToDisk()));
    window.click("testProgramButton");
    user::runEventsUntil([&] { return window.isEnabled("testProgramButton"); }, 5000);
    onlooker.lookAtWindow("backupProgramWindow");
}

void systemBackupProgram(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    scripted::facility::setHasBackupProgram(true);
    openBackupProgram(editor, {});
    onlooker.lookAtWindow("backupProgramWindow");
}

void appliedWithoutProgram(Onlooker& onlooker)
{
    EditorTest editor(completeRecord());
    editor.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
    editor.user.click("suspendCheckBox");
    editor.applyAndDismiss();
    user::runEventsUntil([] { return user::currentAlert().has_value(); }, 5000);
    onlooker.lookAtSheet();
}

void firstStart(Onlooker& onlooker)
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    scripted::volumes::add({.path = "/media/anna/Disk"});
    test.launch();
    onlooker.lookAtWindow("firstStartWindow");
}

// With every question that there is, and a refused answer.
void firstStartRefused(Onlooker& onlooker)
{
    FirstStartTest test(offerOfPrograms({"restic"}));
    test.launch();
    test.scheduler.refuseMessage(
        12,
        {BRVErrorDomain,
         BRVErrorWrongType,
         {{"key", "Repository"}, {"expected", BackupFieldExpectation::OfAdministrator}, {"path", "/home/anna"}},
         nullptr});
    test.type("firstDestinationField", "/home/anna/backups");
    test.type("firstSecretFileField", "/root/restic-password");
    test.choose("whenPopUp", 1);
    test.click("startButton");
    onlooker.lookAtWindow("firstStartWindow");
}

void firstStartWithoutProgram(Onlooker& onlooker)
{
    FirstStartTest test(offerOfPrograms({}));
    test.launch();
    onlooker.lookAtWindow("firstStartWindow");
}

void firstStartOfSystem(Onlooker& onlooker)
{
    FirstStartTest test(offerOfPrograms({}));
    scripted::facility::setHasBackupProgram(true);
    test.launch();
    onlooker.lookAtWindow("firstStartWindow");
}

} // namespace

const std::vector<State>& states()
{
    static const std::vector<State> all{
        {"when-inactive", whenInactive},
        {"interval", interval},
        {"times-of-day", timesOfDay},
        {"too-many-times", tooManyTimes},
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
        {"not-uninstalled", notUninstalled},
        {"settings-not-opened", settingsNotOpened},
        {"preferences", preferences},
        {"console", console},
        {"local-snapshots", localSnapshots},
        {"no-snapshots", noSnapshots},
        {"no-volume", noVolume},
        {"no-full-disk-access", noFullDiskAccess},
        {"list-as-administrator", listAsAdministrator},
        {"about-full-disk-access", aboutFullDiskAccess},
        {"about", about},
        {"activity", activity},
        {"activity-with-edits", activityWithEdits},
        {"activity-without-backup", activityWithoutBackup},
        {"activity-with-older-helper", activityWithOlderHelper},
        {"backup-not-started", backupNotStarted},
        {"backup-program", backupProgram},
        {"no-backup-program", noBackupProgram},
        {"no-backup-program-chosen", noBackupProgramChosen},
        {"backup-program-not-set-up", backupProgramNotSetUp},
        {"backup-program-service", backupProgramService},
        {"backup-program-refused", backupProgramRefused},
        {"backup-program-failed", backupProgramFailed},
        {"system-backup-program", systemBackupProgram},
        {"applied-without-program", appliedWithoutProgram},
        {"first-start", firstStart},
        {"first-start-refused", firstStartRefused},
        {"first-start-without-program", firstStartWithoutProgram},
        {"first-start-of-system", firstStartOfSystem},
    };
    return all;
}
