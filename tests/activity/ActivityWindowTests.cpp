#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "platform/ui/TextView.h"
#include "protocol/ErrorCodes.h"
#include "tests/activity/Told.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/RowsUser.h"

#include <doctest/doctest.h>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QClipboard>

using namespace platform::ui;
using platform::Array;
using platform::Dictionary;
using told::date;
using Rows = std::vector<std::string>;
namespace service = scripted::service;

namespace {

// The scripted clock's first moment, 01:00 in Berlin.
constexpr const char* newYear = "2026-01-01T00:00:00Z";
constexpr const char* statusNotification = "com.zerkolin.brevane.status";
constexpr int appliedItem = 0;
constexpr int editedItem = 1;

class ActivityUser : public WindowUser {
public:
    ActivityUser() : WindowUser("activityWindow") { }

    std::string state() const { return text("activityStateLabel"); }
    std::string lastBackup() const { return textOrNothing("activityLastBackupLabel"); }
    std::string notes() const { return textOrNothing("activityNotesLabel"); }
    std::string edits() const { return textOrNothing("activityEditsLabel"); }

    // "When" and, where there is one, the note.
    Rows moments() const
    {
        Rows rows;
        const auto& model = *table().model();
        for (int row = 0; row < model.rowCount(); ++row) {
            const auto cell = [&](int column) { return model.index(row, column).data().toString().toStdString(); };
            rows.push_back(cell(0) + (cell(1).empty() ? "" : " | " + cell(1)));
        }
        return rows;
    }
    std::string placeholder() const { return table().placeholderText().toStdString(); }

    TextView& journalView() const { return dynamic_cast<TextView&>(*viewForWidget(&visibleWidget("journalTextView"))); }
    void focusJournal() const { visibleWidget("journalTextView").findChild<QAbstractScrollArea*>()->setFocus(); }
    std::string journal() const { return journalView().textStorage()->string(); }

private:
    std::string textOrNothing(const char* label) const { return sees(label) ? text(label) : std::string(); }
    const DataTable& table() const { return dynamic_cast<const DataTable&>(visibleWidget("momentsTable")); }
};

Dictionary moment(const char* at, const char* mark = "")
{
    return {{"At", date(at)}, {mark, true}};
}

// Waiting for tomorrow's backup, after one that succeeded.
Dictionary waiting()
{
    return {
        {"Now", date(newYear)},
        {"Zone", "Europe/Berlin"},
        {"State", "waiting"},
        {"Due", date("2026-01-02T08:00:00Z")},
        {"LastStart", date("2025-12-31T08:00:00Z")},
        {"LastEnd", date("2025-12-31T08:05:00Z")},
        {"LastSucceeded", date("2025-12-31T08:05:00Z")},
        {"Program", "Borg"},
        {"Upcoming", Array{moment("2026-01-02T08:00:00Z"), moment("2026-01-03T01:30:00Z", "Suspended")}},
        {"Journal",
         Array{Dictionary{{"At", date("2025-12-31T08:05:00Z")}, {"Event", "end"}, {"Succeeded", true}, {"Text", ""}},
               Dictionary{{"At", date("2025-12-31T08:00:00Z")},
                          {"Event", "start"},
                          {"Due", date("2025-12-31T08:00:00Z")},
                          {"Text", ""}}}}};
}

Dictionary blockedOnBattery()
{
    auto status = waiting();
    status.set("State", "blocked");
    status.set("Due", date("2025-12-31T23:00:00Z"));
    status.set("Reasons", Array{"battery"});
    return status;
}

// Every two hours, which is what completeRecord() says in other words.
class ActivityTest {
public:
    explicit ActivityTest(const Dictionary& status = waiting(), ScheduleSettings record = completeRecord())
        : editor(std::move(record))
    {
        editor.scheduler.setStatus(status);
    }

    void open()
    {
        const auto before = editor.scheduler.count(5);
        editor.user.clickMenuItem("activityMenuItem");
        CHECK(answered(before + 1));
    }

    // Another status, and the helper says so.
    void tell(const Dictionary& status)
    {
        const auto before = editor.scheduler.count(5);
        editor.scheduler.setStatus(status);
        scripted::notifications::arrive(statusNotification);
        CHECK(answered(before + 1));
    }

    // So many questions in all, and the answer to the last one.
    bool answered(std::size_t questions)
    {
        const bool isAnswered =
            user::runEventsUntil([&] { return editor.scheduler.count(5) >= questions && !isSpinning(); }, 10'000);
        user::runEvents();
        return isAnswered && editor.scheduler.count(5) == questions;
    }

    bool isSpinning() const { return activity.sees("activitySpinner"); }

    EditorTest editor;
    ActivityUser activity;
};

platform::Error refusal(const char* domain, std::int64_t code)
{
    return {domain, code, {{"message", 5}}, nullptr};
}

} // namespace

TEST_CASE("the window Activity tells the state, the last backup, the next moments and the journal")
{
    ActivityTest test;
    CHECK(test.editor.scheduler.count(5) == 0); // nobody has looked yet
    test.open();
    CHECK(test.activity.seesWindow());
    CHECK(test.activity.state() == "Next backup: Tomorrow, 09:00");
    CHECK(test.activity.lastBackup() == "Last backup: Yesterday, 09:05, successful.");
    CHECK(test.activity.notes().empty());
    CHECK(test.activity.edits().empty());
    CHECK(test.activity.moments() == Rows{"Tomorrow, 09:00", "Saturday, 02:30 | suspended"});
    CHECK(test.activity.journal()
          == "Yesterday, 09:05 – The backup succeeded; it took 5 minutes.\n"
             "Yesterday, 09:00 – Started the backup of 09:00.");
    CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
    CHECK(test.activity.isEnabled("backUpNowButton"));
}

TEST_CASE("the window follows what the helper tells, and asks for nothing else")
{
    ActivityTest test;
    test.open();
    test.tell(blockedOnBattery());
    CHECK(test.activity.state() == "Waiting: on battery power");
    CHECK(test.activity.notes() == "Due since: Today, 00:00.");
    auto running = waiting();
    running.set("State", "running");
    running.set("LastStart", date(newYear));
    running.remove("LastEnd");
    test.tell(running);
    CHECK(test.activity.state() == "A backup is running. Started: Today, 01:00");
    CHECK_FALSE(test.activity.isEnabled("backUpNowButton"));
    scripted::clock::advance(std::chrono::hours(3));
    user::runEvents();
    CHECK(test.editor.scheduler.count(5) == 3);
}

TEST_CASE("a window that is closed does not ask, and asks when it is shown again")
{
    ActivityTest test;
    test.open();
    test.activity.pressKeys("Ctrl+W");
    CHECK_FALSE(test.activity.seesWindow());
    test.editor.scheduler.setStatus(blockedOnBattery());
    scripted::notifications::arrive(statusNotification);
    user::runEvents();
    CHECK(test.editor.scheduler.count(5) == 1);
    test.open();
    CHECK(test.activity.state() == "Waiting: on battery power");
}

TEST_CASE("while the helper has not answered the window says so, and what changes meanwhile is asked for afterwards")
{
    ActivityTest test;
    service::hold();
    test.editor.user.clickMenuItem("activityMenuItem");
    user::runEvents();
    CHECK(test.activity.state() == "Asking the background scheduler…");
    CHECK(test.isSpinning());
    CHECK_FALSE(test.activity.isEnabled("backUpNowButton"));
    scripted::notifications::arrive(statusNotification);
    scripted::notifications::arrive(statusNotification);
    user::runEvents();
    service::release();
    CHECK(test.answered(2));
    CHECK(test.activity.state() == "Next backup: Tomorrow, 09:00");
}

TEST_CASE("a helper that does not know the message is told as one of another version, until it is replaced")
{
    ActivityTest test;
    test.editor.scheduler.refuseMessage(5, refusal(ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage));
    test.open();
    CHECK(test.activity.state()
          == "The background scheduler is of another version, which does not tell about backups. Install the latest "
             "version of Brevane.");
    CHECK(test.activity.lastBackup().empty());
    CHECK(test.activity.moments().empty());
    CHECK(test.activity.placeholder().empty());
    CHECK(test.activity.journal().empty());
    CHECK_FALSE(test.activity.isEnabled("backUpNowButton"));
    test.editor.scheduler.answerMessage(5, replyWith(waiting()));
    scripted::notifications::arrive(statusNotification);
    CHECK(test.answered(2));
    CHECK(test.activity.state() == "Next backup: Tomorrow, 09:00");
    CHECK(test.activity.isEnabled("backUpNowButton"));
}

TEST_CASE("a helper that is not there is told as such")
{
    ActivityTest test;
    test.open();
    test.editor.scheduler.answerMessage(5, std::unexpected(platform::ServiceError::Invalid));
    scripted::notifications::arrive(statusNotification);
    CHECK(test.answered(2));
    CHECK(test.activity.state() == "The background scheduler does not run, or is not installed.");
    CHECK(test.activity.moments().empty());
    CHECK_FALSE(test.activity.isEnabled("backUpNowButton"));
}

TEST_CASE("a machine that was never backed up has empty lists that say so")
{
    ActivityTest test({{"Now", date(newYear)}, {"Zone", "Europe/Berlin"}, {"State", "waiting"}},
                      completeRecordWith("BackupsMode", "WhenInactive"));
    test.open();
    CHECK(test.activity.state() == "Waiting for the computer to be inactive.");
    CHECK(test.activity.lastBackup() == "No backup yet.");
    CHECK(test.activity.notes() == "No backup program is chosen.");
    CHECK(test.activity.moments().empty());
    CHECK(test.activity.placeholder()
          == "Backups wait until nobody uses the computer. When that will be is not known.");
    CHECK(test.activity.journal() == "Nothing has happened yet.");
}

TEST_CASE("a schedule that is off shows no moments, though the helper tells those that it would have")
{
    auto status = waiting();
    status.set("State", "off");
    ActivityTest test(status, completeRecordWith("Backups", false));
    test.open();
    CHECK(test.activity.state() == "Backups are off.");
    CHECK(test.activity.moments().empty());
    CHECK(test.activity.placeholder() == "Backups are off.");
}

TEST_CASE(
    "pressing Back Up Now sends its message with an authorization, and nobody can press it again until it is answered")
{
    ActivityTest test;
    test.open();
    service::hold();
    test.activity.click("backUpNowButton");
    user::runEvents();
    CHECK(test.isSpinning());
    CHECK_FALSE(test.activity.isEnabled("backUpNowButton"));
    service::release();
    CHECK(test.answered(2)); // it asks how things stand then
    CHECK(test.editor.scheduler.count(3) == 1);
    CHECK_FALSE(user::currentAlert());
    CHECK(test.activity.isEnabled("backUpNowButton"));
    const auto requests = service::requests();
    const auto sent = std::ranges::find_if(
        requests, [](const auto& request) { return std::get<std::int64_t>(request.message.at("message")) == 3; });
    REQUIRE(sent != requests.end());
    CHECK(sent->message.contains("auth"));
}

TEST_CASE("why a backup was not started is told on a sheet of the window")
{
    ActivityTest test;
    test.open();
    test.editor.scheduler.refuseMessage(3, {BRVErrorDomain, BRVErrorMissingValue, {{"key", "Program"}}, nullptr});
    test.activity.click("backUpNowButton");
    CHECK(user::runEventsUntil([] { return user::currentAlert().has_value(); }, 10'000));
    const auto alert = test.activity.alert();
    CHECK(alert.messageText == "The backup could not be started.");
    CHECK(alert.informativeText == "No backup program is chosen.");
    CHECK(alert.isSheet);
    test.activity.dismissAlert();
    CHECK(test.activity.isEnabled("backUpNowButton"));
}

TEST_CASE("who cancels the authentication of Back Up Now is told nothing")
{
    ActivityTest test;
    test.open();
    scripted::authorization::answerCopyRight("com.zerkolin.brevane.settings.modify-1",
                                             {platform::Authorization::Canceled});
    test.activity.click("backUpNowButton");
    user::runEvents();
    CHECK_FALSE(user::currentAlert());
    CHECK(test.editor.scheduler.count(3) == 0);
    CHECK(test.activity.isEnabled("backUpNowButton"));
}

TEST_CASE("edits that are not applied have their own next moments, beside those of the schedule in force")
{
    ActivityTest test;
    test.open();
    test.editor.user.replaceText("intervalField", "300");
    CHECK(test.activity.sees("activitySchedulePopUp"));
    CHECK(test.activity.selectedIndex("activitySchedulePopUp") == editedItem);
    const auto moments = test.activity.moments();
    REQUIRE(moments.size() == 20); // from now on, since the last start is longer ago
    CHECK(moments[0] == "Today, 06:00 | suspended");
    CHECK(moments[1] == "Today, 11:00");
    CHECK(test.activity.edits() == "The edited settings are not applied yet.");
    test.activity.choose("activitySchedulePopUp", appliedItem);
    CHECK(test.activity.moments() == Rows{"Tomorrow, 09:00", "Saturday, 02:30 | suspended"});
    test.editor.user.replaceText("intervalField", "301"); // the choice stays while there are edits
    CHECK(test.activity.selectedIndex("activitySchedulePopUp") == appliedItem);
    test.editor.user.replaceText("intervalField", "90");
    CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
    CHECK(test.activity.edits().empty());
}

TEST_CASE("an apply that starts a backup at once is pointed out before it")
{
    ActivityTest test(waiting(), completeRecordWith("BackupsMode", "WhenInactive"));
    test.open();
    test.editor.user.choose("operationModePopUp", 1);
    CHECK(test.activity.edits() == "The edited settings are not applied yet."); // in the suspension
    test.editor.user.click("advancedSettingsButton");
    test.editor.user.click("suspendCheckBox");
    CHECK(test.activity.edits()
          == "The edited settings are not applied yet.\n"
             "Applying them starts a backup at once, unless something stands in its way.");
}

TEST_CASE("edits that were applied are no edits any more")
{
    ActivityTest test;
    test.open();
    test.editor.user.click("suspendCheckBox");
    CHECK(test.activity.sees("activitySchedulePopUp"));
    CHECK(test.editor.applyAndDismiss());
    CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
    CHECK(test.activity.edits().empty());
}

TEST_CASE("edits that are thrown away are no edits any more")
{
    ActivityTest test;
    test.open();
    test.editor.user.click("suspendCheckBox");
    CHECK(test.activity.sees("activitySchedulePopUp"));
    test.editor.user.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
}

TEST_CASE("a time of day in the suspension is pointed out before it is applied, and afterwards")
{
    auto record = completeRecordWith("BackupsMode", "CalendarIntervals");
    record.set("CalendarIntervals", Dictionary{{"Intervals", Array{Dictionary{{"Hour", 9}}}}, {"ASAP", false}});
    ActivityTest test(waiting(), record);
    test.open();
    CHECK(test.activity.notes().empty());
    test.editor.user.click("advancedSettingsButton");
    test.editor.user.pick("suspendToPicker", {.hour = 10, .minute = 0});
    CHECK(test.activity.edits()
          == "The edited settings are not applied yet.\nSome of their times of day lie in the daily suspension. Those "
             "backups would be missed each time.");
    CHECK(test.editor.applyAndDismiss());
    CHECK(test.activity.notes()
          == "Some times of day lie in the daily suspension. Their backups are missed each time.");
}

TEST_CASE("the moments follow every control of the schedule while it is edited")
{
    const auto edits = [](const char* mode, const std::function<void(MainWindowUser&)>& edit) {
        ActivityTest test(waiting(), completeRecordWith("BackupsMode", mode));
        test.open();
        CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
        test.editor.user.click("advancedSettingsButton");
        edit(test.editor.user);
        while (user::currentAlert())
            test.editor.user.dismissAlert();
        CHECK(test.activity.sees("activitySchedulePopUp"));
    };
    using User = MainWindowUser;
    const auto click = [](const char* box) { return [box](User& user) { user.click(box); }; };
    for (const char* const box :
         {"backupsCheckBox", "suspendCheckBox", "allowBatteryCheckBox", "dontRunWhenPassiveCheckBox",
          "dontRunWithSleepPreventersCheckBox", "dontRunWhenNotNetworkWiredCheckBox", "snapshotsCheckBox"}) {
        CAPTURE(box);
        edits("Interval", click(box));
    }
    edits("Interval", [](User& user) { user.choose("operationModePopUp", 0); });
    edits("Interval", [](User& user) { user.choose("intervalUnitsPopUp", 1); });
    edits("Interval", [](User& user) { user.step("intervalStepper", user::StepDirection::Up); });
    edits("Interval", [](User& user) { user.press("intervalField", Key::Up); });
    edits("Interval", [](User& user) { user.press("intervalField", Key::Down); });
    edits("Interval", [](User& user) { user.pick("suspendFromPicker", {.hour = 21, .minute = 15}); });
    edits("Interval", [](User& user) { user.pick("suspendToPicker", {.hour = 7, .minute = 45}); });
    edits("CalendarIntervals", click("asapCheckBox"));
    edits("CalendarIntervals", [](User&) { RowsUser().add(0); });
    edits("CalendarIntervals", [](User&) { RowsUser().chooseWeekday(0, 2); });
    edits("CalendarIntervals", [](User&) { RowsUser().pickTime(0, {.hour = 10, .minute = 30}); });
}

TEST_CASE("a control in a row that was added tells of its changes too")
{
    auto record = completeRecordWith("BackupsMode", "CalendarIntervals");
    ActivityTest test(waiting(), record);
    test.open();
    RowsUser rows;
    rows.add(0);
    rows.pickTime(1, {.hour = 11, .minute = 30});
    CHECK(test.activity.moments()[1] == "Today, 11:30");
    rows.remove(1);
    CHECK_FALSE(test.activity.sees("activitySchedulePopUp"));
}

TEST_CASE("at midnight of the schedule's zone tomorrow becomes today, without a question to the helper")
{
    ActivityTest test;
    test.open();
    scripted::clock::advance(std::chrono::hours(22));
    user::runEvents();
    CHECK(test.activity.state() == "Next backup: Tomorrow, 09:00");
    scripted::clock::advance(std::chrono::hours(1));
    CHECK(user::runEventsUntil([&] { return test.activity.state() == "Next backup: Today, 09:00"; }, 10'000));
    CHECK(test.activity.moments()[0] == "Today, 09:00");
    CHECK(test.editor.scheduler.count(5) == 1);
}

TEST_CASE("a zone that changes while the window is open is asked for anew, and not while it is closed")
{
    ActivityTest test;
    test.open();
    CHECK(test.activity.moments()[0] == "Tomorrow, 09:00");
    auto inTokyo = waiting();
    inTokyo.set("Zone", "Asia/Tokyo");
    test.editor.scheduler.setStatus(inTokyo);
    scripted::clock::setZone("Asia/Tokyo");
    CHECK(test.answered(2));
    CHECK(test.activity.moments()[0] == "Tomorrow, 17:00");
    user::closeWindow("activityWindow");
    scripted::clock::setZone("Europe/Berlin");
    user::runEvents();
    CHECK(test.editor.scheduler.count(5) == 2);
}

TEST_CASE("the journal can be selected and copied, and what is selected stays so when nothing new is told")
{
    ActivityTest test;
    test.open();
    test.activity.focusJournal();
    test.activity.pressKeys("Ctrl+A");
    const auto all = test.activity.journal();
    CHECK(test.activity.journalView().selectedText() == all);
    test.tell(waiting());
    CHECK(test.activity.journalView().selectedText() == all);
    test.activity.pressKeys("Ctrl+C");
    CHECK(QApplication::clipboard()->text().toStdString() == all);
    test.tell(blockedOnBattery());
    CHECK(test.activity.journalView().selectedText() == all); // the journal is the same
}

TEST_CASE("the window's place is remembered, and forgotten by an uninstallation whatever becomes of it")
{
    ActivityTest test;
    test.open();
    test.activity.pressKeys("Ctrl+W");
    CHECK(scripted::defaults::all().contains("Window Frame Activity"));
    test.open();
    user::answerNextAlert(0);
    test.editor.user.clickMenuItem("uninstallMenuItem");
    user::runEvents();
    CHECK_FALSE(test.activity.seesWindow());
    CHECK(scripted::defaults::all() == Dictionary());
}

TEST_CASE("the user can choose not to be told of failures, and is told until then")
{
    ActivityTest test;
    test.open();
    CHECK(test.activity.isOn("notifiesCheckBox"));
    test.activity.click("notifiesCheckBox");
    CHECK(scripted::defaults::all().find("NotifiesOfBackups")->boolValue() == false);
    test.activity.click("notifiesCheckBox");
    CHECK(scripted::defaults::all().boolForKey("NotifiesOfBackups"));
    scripted::defaults::setReadOnly(true);
    test.activity.click("notifiesCheckBox");
    CHECK(test.activity.isOn("notifiesCheckBox"));
}
