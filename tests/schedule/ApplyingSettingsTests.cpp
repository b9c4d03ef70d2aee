#include "messaging/ZRKAuthorizationManager.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleRanges.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/schedule/WindowControls.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/RowsUser.h"

#include <algorithm>
#include <cstddef>
#include <doctest/doctest.h>
#include <string>
#include <vector>

using platform::Dictionary;

namespace {

const char* const alreadyApplied = "Settings already applied.";

std::vector<std::string> keys(const Dictionary& dictionary)
{
    std::vector<std::string> result;
    for (const auto& entry : dictionary)
        result.push_back(entry.key);
    return result;
}

// The record that applying sends when it is pressed right after the launch; every fetched record of these tests
// differs.
ScheduleSettings sentUnedited(const ScheduleSettings& fetched, const Machine& machine = {})
{
    EditorTest editor(fetched, machine);
    const auto sent = editor.apply();
    REQUIRE(sent);
    return *sent;
}

} // namespace

TEST_CASE("applying without edits says so and sends nothing")
{
    EditorTest editor(completeRecord());
    CHECK_FALSE(editor.apply());
    const auto alert = editor.user.alert();
    CHECK(alert.messageText == alreadyApplied);
    CHECK(alert.informativeText
          == "The settings you are attempting to apply are already the ones installed in your system.");
    CHECK(alert.buttons == std::vector<std::string>{"OK"});
    CHECK(alert.isSheet);
}

TEST_CASE("applying twice in a row sends the record once")
{
    EditorTest editor(completeRecord());
    editor.user.replaceText("intervalField", "45");
    CHECK(editor.applyAndDismiss());
    CHECK_FALSE(editor.apply());
    CHECK(editor.user.alert().messageText == alreadyApplied);
    CHECK(editor.scheduler.received().size() == 1);
    CHECK(editor.scheduler.fetches() == 1);
}

TEST_CASE("an edit that was taken back counts as none")
{
    EditorTest editor(completeRecord());
    editor.user.click("suspendCheckBox");
    editor.user.click("suspendCheckBox");
    editor.user.replaceText("intervalField", "91");
    editor.user.press("intervalField", Key::Down);
    CHECK_FALSE(editor.apply());
}

TEST_CASE("a record that holds Disabled is sent even without edits, and without that key")
{
    for (const bool disabled : {true, false}) {
        const ScheduleSettings sent = sentUnedited(completeRecordWith("Disabled", disabled));
        CHECK_FALSE(sent.contains("Disabled"));
        CHECK(sent.boolForKey("Backups") == !disabled);
        CHECK(sent.boolForKey("Snapshots") == !disabled);
    }
}

TEST_CASE("after a disabled record was applied, the next apply has nothing to do")
{
    EditorTest editor(completeRecordWith("Disabled", true));
    CHECK(editor.applyAndDismiss());
    CHECK_FALSE(editor.apply());
}

TEST_CASE("every control is written under its key")
{
    EditorTest editor(completeRecord());
    editor.user.replaceText("intervalField", "12");
    editor.user.choose("intervalUnitsPopUp", 1);
    editor.user.click("suspendCheckBox");
    editor.user.pick("suspendFromPicker", {21, 10});
    editor.user.pick("suspendToPicker", {7, 50});
    editor.user.click("allowBatteryCheckBox");
    editor.user.click("advancedSettingsButton");
    editor.user.click("dontRunWhenPassiveCheckBox");
    editor.user.click("dontRunWhenNotNetworkWiredCheckBox");
    editor.user.click("snapshotsCheckBox");

    ScheduleSettings expected = completeRecord();
    expected.set("Interval", Dictionary{{"Hours", 12}});
    expected.set("Suspend", false);
    expected.set("SuspendSettings",
                 Dictionary{{"StartHour", 21}, {"StartMinute", 10}, {"EndHour", 7}, {"EndMinute", 50}});
    expected.set("AllowBattery", false);
    expected.set("DontRunWhenPassive", true);
    expected.set("DontRunWhenNotNetworkWired", true);
    expected.set("Snapshots", false);
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent == expected);
}

TEST_CASE("a record built from nothing is sent with its keys in the editor's order")
{
    CHECK(keys(sentUnedited({}))
          == std::vector<std::string>{"Backups", "BackupsMode", "WhenInactive", "Suspend", "SuspendSettings",
                                      "DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired",
                                      "AllowBattery", "Snapshots"});
}

TEST_CASE("keys that the editor does not know travel through untouched")
{
    const Dictionary unknown{{"Nested", platform::Array{1, "two", Dictionary{{"Three", 3.5}}}}};
    ScheduleSettings fetched = completeRecordWith("Future", unknown);
    fetched.set("Note", "kept");
    EditorTest editor(fetched);
    editor.user.click("suspendCheckBox");
    const auto sent = editor.apply();
    REQUIRE(sent);
    REQUIRE(sent->find("Future"));
    CHECK(*sent->find("Future") == platform::PropertyList(unknown));
    CHECK(*sent->stringForKey("Note") == "kept");
}

TEST_CASE("a mode that was never shown is sent back exactly as it was fetched")
{
    ScheduleSettings fetched = completeRecordWith("BackupsMode", "WhenInactive");
    const Dictionary interval{{"Minutes", 180}, {"Extra", "kept"}};
    fetched.set("Interval", interval);
    EditorTest editor(fetched);
    editor.user.click("suspendCheckBox");
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->dictionaryForKey("Interval") == interval);
    CHECK(*sent->find("CalendarIntervals") == *completeRecord().find("CalendarIntervals"));
}

TEST_CASE("the selected mode is written from its controls, also while backups are off and it is not on screen")
{
    const platform::Array entries{Dictionary{{"Day", 1}, {"Hour", 9}},
                                  Dictionary{{"Weekday", 0}, {"Hour", 9}, {"Minute", 30}}};
    const ScheduleSettings calendar = sentUnedited({{"Disabled", true},
                                                    {"Backups", true},
                                                    {"BackupsMode", "CalendarIntervals"},
                                                    {"CalendarIntervals", Dictionary{{"Intervals", entries}}}});
    CHECK_FALSE(calendar.boolForKey("Backups"));
    CHECK(*calendar.dictionaryForKey("CalendarIntervals")
          == Dictionary{{"Intervals", platform::Array{Dictionary{{"Weekday", 7}, {"Hour", 9}, {"Minute", 30}}}},
                        {"ASAP", false}});

    ScheduleSettings fetched = completeRecordWith("Backups", false);
    fetched.set("Interval", Dictionary{{"Minutes", 180}});
    CHECK(*sentUnedited(fetched).dictionaryForKey("Interval") == Dictionary{{"Hours", 3}});
}

TEST_CASE("an interval that was shown is sent in its normal form, so that it differs from the fetched one")
{
    CHECK(*sentUnedited(completeRecordWith("Interval", Dictionary{{"Minutes", 180}})).dictionaryForKey("Interval")
          == Dictionary{{"Hours", 3}});
}

TEST_CASE("all modes that were opened contribute, whichever is selected")
{
    EditorTest editor(completeRecordWith("WhenInactive", Dictionary{{"Ignored", 1}}));
    editor.user.replaceText("intervalField", "30");
    editor.user.choose("operationModePopUp", 0);
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->stringForKey("BackupsMode") == "WhenInactive");
    CHECK(*sent->dictionaryForKey("Interval") == Dictionary{{"Minutes", 30}});
    CHECK(sent->dictionaryForKey("WhenInactive")->empty());
}

TEST_CASE("both sub-records are sent when the mode goes from an edited interval to an edited calendar")
{
    EditorTest editor(completeRecord());
    editor.user.replaceText("intervalField", "30");
    editor.user.choose("operationModePopUp", 2);
    RowsUser().setTime(0, {10, 45});
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->stringForKey("BackupsMode") == "CalendarIntervals");
    CHECK(*sent->dictionaryForKey("Interval") == Dictionary{{"Minutes", 30}});
    CHECK(*sent->dictionaryForKey("CalendarIntervals")
          == Dictionary{{"Intervals", platform::Array{Dictionary{{"Hour", 10}, {"Minute", 45}}}}, {"ASAP", true}});
}

TEST_CASE("with no mode selected the record names the calendar")
{
    EditorTest editor(completeRecord());
    selectNothing("operationModePopUp");
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->stringForKey("BackupsMode") == "CalendarIntervals");
    CHECK(*sent->find("CalendarIntervals") == *completeRecord().find("CalendarIntervals"));
}

TEST_CASE("entries that the calendar editor does not show are gone once it was opened, and kept while it was not")
{
    ScheduleSettings fetched = completeRecord();
    const Dictionary monthly{
        {"Intervals", platform::Array{Dictionary{{"Day", 1}, {"Hour", 9}}, Dictionary{{"Hour", 9}, {"Minute", 0}}}},
        {"ASAP", false}};
    fetched.set("CalendarIntervals", monthly);
    EditorTest editor(fetched);
    editor.user.click("suspendCheckBox");
    CHECK(*editor.applyAndDismiss()->dictionaryForKey("CalendarIntervals") == monthly);
    editor.user.choose("operationModePopUp", 2);
    CHECK(*editor.applyAndDismiss()->dictionaryForKey("CalendarIntervals")->arrayForKey("Intervals")
          == platform::Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
}

TEST_CASE("a check box in the mixed state counts as off")
{
    ScheduleSettings fetched = completeRecordWith("BackupsMode", "CalendarIntervals");
    for (const char* key : {"DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"})
        fetched.set(key, true);
    EditorTest editor(fetched);
    for (const char* box :
         {"suspendCheckBox", "allowBatteryCheckBox", "snapshotsCheckBox", "dontRunWhenPassiveCheckBox",
          "dontRunWithSleepPreventersCheckBox", "dontRunWhenNotNetworkWiredCheckBox", "asapCheckBox"})
        makeMixed(box);
    makeMixed("backupsCheckBox");
    const auto sent = editor.apply();
    REQUIRE(sent);
    for (const char* key : {"Backups", "Suspend", "AllowBattery", "Snapshots", "DontRunWhenPassive",
                            "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"}) {
        CAPTURE(key);
        REQUIRE(sent->find(key));
        CHECK_FALSE(sent->boolForKey(key));
    }
    CHECK_FALSE(sent->dictionaryForKey("CalendarIntervals")->boolForKey("ASAP"));
}

TEST_CASE("a mixed backups box shows the window of backups that are off")
{
    EditorTest editor(completeRecord());
    makeMixed("backupsCheckBox");
    editor.controller->changeBackUpCheckbox();
    CHECK(editor.user.rows() == std::vector<std::string>{"modeStackView", "snapshotsCheckBox"});
    CHECK_FALSE(editor.user.isEnabled("operationModePopUp"));
    CHECK_FALSE(editor.user.sees("advancedSettingsButton"));
}

TEST_CASE(
    "a record with a hundred thousand calendar entries is shown and written without harm, as far as a schedule goes")
{
    constexpr std::size_t count = 100'000;
    constexpr std::size_t most = ScheduleRanges::maximumIntervals;
    ScheduleSettings fetched = completeRecordWith("BackupsMode", "CalendarIntervals");
    fetched.set("CalendarIntervals",
                Dictionary{{"Intervals", platform::Array(count, Dictionary{{"Weekday", 0}, {"Hour", 99}})}});
    fetched.set("Future", "kept");
    EditorTest editor(std::move(fetched));
    CHECK(editor.user.sees("tooManyTimesLabel"));
    RowsUser rows;
    CHECK(rows.count() == static_cast<int>(most));
    rows.setTime(static_cast<int>(most) - 1, {4, 44});
    const auto sent = editor.apply();
    REQUIRE(sent);
    const auto& written = *sent->dictionaryForKey("CalendarIntervals")->arrayForKey("Intervals");
    REQUIRE(written.size() == most);
    const platform::PropertyList sunday(Dictionary{{"Weekday", 7}, {"Hour", 3}, {"Minute", 0}});
    CHECK(std::count(written.begin(), written.end(), sunday) == static_cast<std::ptrdiff_t>(most) - 1);
    CHECK(written.back() == platform::PropertyList(Dictionary{{"Weekday", 7}, {"Hour", 4}, {"Minute", 44}}));
    CHECK(*sent->stringForKey("Future") == "kept");
}

TEST_CASE("hiding the advanced settings switches all three conditions off, whatever their boxes show")
{
    ScheduleSettings fetched = completeRecord();
    for (const char* key : {"DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"})
        fetched.set(key, true);
    EditorTest editor(fetched);
    editor.user.click("advancedSettingsButton");
    const auto sent = editor.applyAndDismiss();
    REQUIRE(sent);
    for (const char* key : {"DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"}) {
        REQUIRE(sent->find(key));
        CHECK_FALSE(sent->boolForKey(key));
    }
    // The boxes were left as they were.
    editor.user.click("advancedSettingsButton");
    CHECK(editor.user.isOn("dontRunWhenPassiveCheckBox"));
    CHECK(editor.apply()->boolForKey("DontRunWhenNotNetworkWired"));
}

TEST_CASE("a suspension that crosses midnight, and an empty one, are sent as they stand")
{
    EditorTest editor(completeRecord());
    editor.user.pick("suspendFromPicker", {23, 0});
    editor.user.pick("suspendToPicker", {1, 0});
    CHECK(*editor.applyAndDismiss()->dictionaryForKey("SuspendSettings")
          == Dictionary{{"StartHour", 23}, {"StartMinute", 0}, {"EndHour", 1}, {"EndMinute", 0}});
    editor.user.pick("suspendFromPicker", {1, 0});
    CHECK(*editor.applyAndDismiss()->dictionaryForKey("SuspendSettings")
          == Dictionary{{"StartHour", 1}, {"StartMinute", 0}, {"EndHour", 1}, {"EndMinute", 0}});
}

TEST_CASE("message 2 carries an authorization, and message 1 none")
{
    EditorTest editor(completeRecord());
    editor.user.click("suspendCheckBox");
    REQUIRE(editor.apply());
    const auto requests = scripted::service::requests();
    REQUIRE(requests.size() == 2);
    CHECK(requests[0].message.count("auth") == 0);
    CHECK(requests[1].message.count("auth") == 1);
    CHECK(requests[0].mode == scripted::service::Mode::Synchronous);
    CHECK(requests[1].mode == scripted::service::Mode::Synchronous);
}

TEST_CASE("a success tells what will happen with the schedule")
{
    struct Case {
        bool backups, snapshots;
        const char* text;
    };
    const char* const enforced = "Brevane will now enforce the new scheduling.";
    const char* const stopped = "Brevane will not schedule backups anymore.";
    for (const Case& each : {Case{true, true, enforced}, Case{true, false, enforced}, Case{false, true, enforced},
                             Case{false, false, stopped}}) {
        EditorTest editor(completeRecordWith("Disabled", false));
        editor.user.tick("snapshotsCheckBox", each.snapshots);
        editor.user.tick("backupsCheckBox", each.backups);
        REQUIRE(editor.apply());
        const auto alert = editor.user.alert();
        CHECK(alert.messageText == "Settings applied successfully.");
        CHECK(alert.informativeText == each.text);
        CHECK(alert.buttons == std::vector<std::string>{"OK"});
        CHECK(alert.isSheet);
        editor.user.answer("OK");
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("a refused record keeps the edits and the current settings")
{
    EditorTest editor(completeRecord());
    editor.scheduler.refuseWith(platform::Error{BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr});
    editor.user.replaceText("intervalField", "45");
    editor.user.click("suspendCheckBox");
    REQUIRE(editor.apply());
    const auto alert = editor.user.alert();
    CHECK(alert.messageText == "Failed to apply settings.");
    CHECK(alert.informativeText
          == "A backup operation is currently running.\n\n"
             "You should try installing the latest version available from the web site.");
    CHECK(alert.isSheet);
    editor.user.answer("OK");
    CHECK(editor.user.text("intervalField") == "45");
    CHECK_FALSE(editor.user.isOn("suspendCheckBox"));

    // The same record is tried again, and the current settings are still the fetched ones.
    editor.scheduler.refuseWith(std::nullopt);
    editor.user.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK(editor.user.text("intervalField") == "90");
    CHECK_FALSE(editor.applyAndDismiss());
    editor.user.replaceText("intervalField", "45");
    CHECK(editor.applyAndDismiss());
}

TEST_CASE("a dismissed authentication is silent, sends nothing and changes nothing")
{
    EditorTest editor(completeRecord());
    for (const char* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        scripted::authorization::answerCopyRight(right, {platform::Authorization::Canceled});
    editor.user.replaceText("intervalField", "45");
    CHECK_FALSE(editor.apply());
    CHECK_FALSE(user::currentAlert());
    CHECK(editor.user.text("intervalField") == "45");
    CHECK_FALSE(editor.scheduler.received().size());

    // Pressed again, it asks again.
    for (const char* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        scripted::authorization::answerCopyRight(right, {platform::Authorization::Success});
    CHECK(editor.applyAndDismiss());
}

TEST_CASE("a dismissed authentication that the scheduler helper reports is silent too")
{
    EditorTest editor(completeRecord());
    const auto canceled = std::make_shared<const platform::Error>(
        platform::Error{ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled, {}, nullptr});
    editor.scheduler.refuseWith(
        platform::Error{ZRKMessagerErrorDomain, ZRKMessagerErrorAuthorize, {{"message", 2}}, canceled});
    editor.user.click("suspendCheckBox");
    CHECK(editor.apply());
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a denied authentication is told")
{
    EditorTest editor(completeRecord());
    for (const char* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        scripted::authorization::answerCopyRight(right, {platform::Authorization::Denied});
    editor.user.click("suspendCheckBox");
    CHECK_FALSE(editor.apply());
    CHECK(editor.user.alert().messageText == "Failed to apply settings.");
    CHECK(editor.user.alert().informativeText.starts_with("Could not authorize message (2)."));
}

TEST_CASE("a scheduler helper that dies while it applies is told, and the next apply reaches the new one")
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerWith(std::unexpected(platform::ServiceError::Interrupted));
    editor.user.click("suspendCheckBox");
    REQUIRE(editor.apply());
    CHECK(editor.user.alert().informativeText.starts_with(
        "Could not send message (2), the service disappeared (crash?) (com.zerkolin.brevane.scheduler)."));
    editor.user.answer("OK");
    editor.scheduler.answerWith(platform::ServiceDictionary{});
    CHECK(editor.apply());
    CHECK(editor.user.alert().messageText == "Settings applied successfully.");
}
