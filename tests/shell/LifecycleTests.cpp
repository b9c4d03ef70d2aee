#include "diagnostics/log/ZRKLog.h"
#include "platform/Queue.h"
#include "platform/UserDefaults.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/platform/ScriptedWorkspace.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

// A launch that fails to fetch: the alert is answered with this button, and the application ends.
user::ShownAlert alertOfFailedLaunch(int button)
{
    user::answerNextAlert(button);
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(user::didTerminate());
    CHECK_FALSE(MainWindowUser().seesWindow());
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 1);
    CHECK(alerts[0].messageText == "Could not get settings.");
    CHECK_FALSE(alerts[0].isSheet);
    return alerts[0];
}

// Presses Cancel in the window that says what is waited for, once it is there; notes what it says.
void cancelWaiting(Texts& said)
{
    platform::Queue::global()->async([&said] {
        std::this_thread::sleep_for(std::chrono::milliseconds(3500));
        platform::Queue::main()->async([&said] {
            said = user::textsIn("waitingWindow");
            user::pressButton("waitingWindow", "Cancel");
        });
    });
}

} // namespace

TEST_CASE("a launch asks for the schedule once, shows the window and goes on running")
{
    EditorTest editor(completeRecord());
    CHECK(editor.scheduler.fetches() == 1);
    CHECK(editor.user.seesWindow());
    CHECK_FALSE(user::currentAlert());
    CHECK_FALSE(user::didTerminate());
}

TEST_CASE("a launch logs the running version once, for information")
{
    EditorTest editor(completeRecord());
    const auto messages = scripted::log::messages();
    const auto isVersion = [](const scripted::log::Message& message) {
        return message.text == "Running version 1234.";
    };
    REQUIRE(std::ranges::count_if(messages, isVersion) == 1);
    CHECK(std::ranges::find_if(messages, isVersion)->type == 1);
}

TEST_CASE("the version is logged to the file too")
{
    const TemporaryDirectory home;
    setUp({});
    scripted::system::setHomeDirectory(home.path());
    ZRKLogInit("com.zerkolin.brevane", "application");
    const PlayedScheduler scheduler(completeRecord());
    const auto controller = BREditorController::create();
    user::launch(controller);
    const std::string text = contentOfFile(home.file("Library/Logs/Brevane/application.log"));
    const std::string line = "Running version 1234.\n";
    CHECK(text.ends_with(line));
    CHECK(text.find(line) == text.size() - line.size());
    // Without the file again, as the other tests have it.
    scripted::system::reset();
    ZRKLogInit("com.zerkolin.brevane", "application");
}

TEST_CASE("a launch without a scheduler helper says that it is disabled and ends")
{
    setUp({});
    const auto alert = alertOfFailedLaunch(2);
    CHECK(alert.informativeText.starts_with("The background scheduler appears to be disabled."));
    CHECK(alert.buttons == Texts{"Go to Web Site", "Ask for Support", "OK"});
    CHECK(scripted::workspace::openedURLs().empty());
    CHECK(scripted::service::requests().size() == 2); // the schedule and, at the end, the automatic updates
}

TEST_CASE("a launch without an installed scheduler helper says so and offers the web site")
{
    setUp({});
    scripted::system::removeFile("/Library/Brevane/com.zerkolin.brevane.scheduler");
    const auto alert = alertOfFailedLaunch(0);
    CHECK(alert.informativeText.starts_with("The background scheduler is not installed."));
    CHECK(scripted::workspace::openedURLs() == Texts{"https://brevane.zerkolin.example/brevane/"});
}

TEST_CASE("a launch whose request the scheduler helper refuses tells the error and ends")
{
    setUp({});
    scripted::service::answer(std::unexpected(platform::ServiceError::Interrupted));
    const auto alert = alertOfFailedLaunch(2);
    CHECK(alert.informativeText
          == "Could not send message (1), the service disappeared (crash?) (com.zerkolin.brevane.scheduler).\n\n"
             "You should try installing the latest version available from the web site.");
}

TEST_CASE("a scheduler helper that hangs at launch is named, and giving up ends the application without asking it more")
{
    setUp({});
    const PlayedScheduler scheduler(completeRecord());
    scripted::service::hold();
    Texts said;
    cancelWaiting(said);
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(user::didTerminate());
    CHECK(said == Texts{"Waiting for the background scheduler…"});
    CHECK_FALSE(MainWindowUser().seesWindow());
    CHECK(scripted::service::requests().size() == 1);
    CHECK(scripted::service::requests()[0].mode == scripted::service::Mode::Synchronous);
    scripted::service::release();
}

TEST_CASE("a scheduler helper that hangs when the user quits is named, and giving up ends the application")
{
    EditorTest editor(completeRecord());
    scripted::service::hold();
    Texts said;
    cancelWaiting(said);
    editor.user.clickMenuItem("quitMenuItem");
    CHECK(user::didTerminate());
    CHECK(said == Texts{"Waiting for the background scheduler…"});
    CHECK_FALSE(platform::userDefaultBool("DidAskAboutAutoUpdates"));
    scripted::service::release();
}

TEST_CASE("a schedule that is no dictionary counts as one that cannot be read")
{
    setUp({});
    PlayedScheduler scheduler({});
    const std::string list = R"(<plist version="1.0"><array/></plist>)";
    scheduler.answerMessage(1, platform::ServiceDictionary{{"payload", platform::Data(list.begin(), list.end())}});
    const auto alert = alertOfFailedLaunch(2);
    CHECK(alert.informativeText.starts_with("Could not deserialize reply for message (1)."));
}

TEST_CASE("a failed fetch leaves no current settings, and showing them changes nothing")
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerWith(std::unexpected(platform::ServiceError::Interrupted));
    editor.user.click("suspendCheckBox");
    user::answerNextAlert(2);
    CHECK_FALSE(editor.controller->reloadSettings());
    editor.user.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK_FALSE(editor.user.isOn("suspendCheckBox"));
}

TEST_CASE("an empty reply is an empty schedule")
{
    setUp({});
    PlayedScheduler scheduler({});
    scheduler.answerWith(platform::ServiceDictionary{});
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(MainWindowUser().seesWindow());
    CHECK_FALSE(MainWindowUser().isOn("backupsCheckBox"));
}

TEST_CASE("before macOS 10.13 the item after the local snapshots takes their key")
{
    for (const auto& version : {platform::OperatingSystemVersion{10, 12, 6}, {10, 9, 0}}) {
        EditorTest editor(completeRecord(), {.system = version});
        const auto item = editor.user.menuItem("localSnapshotsMenuItem");
        CHECK(item->isHidden());
        CHECK(item->keyEquivalent().empty());
        REQUIRE(item->next());
        CHECK(item->next()->identifier() == "consoleMenuItem");
        CHECK(item->next()->keyEquivalent() == "1");
    }
}

TEST_CASE("from macOS 10.13 on the local snapshots keep their key")
{
    EditorTest editor(completeRecord(), {.system = {10, 13, 0}});
    const auto item = editor.user.menuItem("localSnapshotsMenuItem");
    CHECK(item->keyEquivalent() == "1");
    REQUIRE(item->next());
    CHECK(item->next()->keyEquivalent() == "2");
}

TEST_CASE("as long as the question about automatic updates is open, the process must be asked before it ends")
{
    {
        EditorTest editor(completeRecord());
        CHECK(scripted::system::suddenTerminationDisabled() == 1);
    }
    setUp({});
    PlayedScheduler scheduler(completeRecord());
    platform::setUserDefault("DidAskAboutAutoUpdates", true);
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(scripted::system::suddenTerminationDisabled() == 0);
}

TEST_CASE("the process must be asked before it ends already while the schedule is fetched")
{
    setUp({});
    int disabledAtFetch = 0;
    scripted::service::setHandler([&](const platform::ServiceDictionary&) {
        disabledAtFetch = scripted::system::suddenTerminationDisabled();
        return replyWith(completeRecord());
    });
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(disabledAtFetch == 1);
    CHECK(scripted::system::suddenTerminationDisabled() == 1);
}

TEST_CASE("a machine without a battery, and one that cannot say, offer nothing about battery power")
{
    for (const std::optional<bool> battery : {std::optional(false), std::optional<bool>()}) {
        EditorTest editor(completeRecord(), {.battery = battery});
        CHECK_FALSE(editor.user.sees("allowBatteryCheckBox"));
    }
    EditorTest editor(completeRecord());
    CHECK(editor.user.sees("allowBatteryCheckBox"));
}

TEST_CASE("a second start brings the main window forward, minimised or behind another")
{
    EditorTest editor(completeRecord());
    editor.user.clickMenuItem("preferencesMenuItem");
    CHECK(user::activeWindow() == "preferencesWindow");
    CHECK(editor.controller->applicationDidReopen(false));
    user::runEvents();
    CHECK(user::activeWindow() == "mainWindow");

    editor.user.clickMenuItem("minimiseMenuItem");
    CHECK(user::isMinimised("mainWindow"));
    CHECK(editor.controller->applicationDidReopen(false));
    user::runEvents();
    CHECK_FALSE(user::isMinimised("mainWindow"));
}

TEST_CASE("a window that the system has brought forward is not covered by the main window")
{
    EditorTest editor(completeRecord());
    editor.user.clickMenuItem("preferencesMenuItem");
    CHECK_FALSE(editor.controller->applicationDidReopen(true));
    user::runEvents();
    CHECK(user::activeWindow() == "preferencesWindow");
}

TEST_CASE("another program can have the windows Activity and Log shown, and none that there is not")
{
    EditorTest editor(completeRecord());
    editor.controller->applicationShouldShow("console");
    user::runEvents();
    CHECK(user::activeWindow() == "mainWindow");
    editor.controller->applicationShouldShow("activity");
    user::runEvents();
    CHECK(user::activeWindow() == "activityWindow");
    editor.controller->applicationShouldShow("log");
    user::runEvents();
    CHECK(user::activeWindow() == "consoleWindow");
}

TEST_CASE("a second start shows no window that is not on screen yet, or not anymore")
{
    setUp({});
    const auto controller = BREditorController::create();
    CHECK_FALSE(controller->applicationDidReopen(false));
    CHECK_FALSE(MainWindowUser().seesWindow());
}

TEST_CASE("the menus open the web site and a mail to support")
{
    EditorTest editor(completeRecord());
    editor.user.clickMenuItem("openWebSiteMenuItem");
    CHECK(scripted::workspace::openedURLs() == Texts{"https://brevane.zerkolin.example/brevane/"});
    editor.user.clickMenuItem("contactByMailMenuItem");
    CHECK(scripted::workspace::openedURLs().back() == "mailto:support@zerkolin.example?subject=Brevane");
}

TEST_CASE("the quit item ends the application")
{
    EditorTest editor(completeRecord());
    editor.user.clickMenuItem("quitMenuItem");
    CHECK(user::didTerminate());
}

TEST_CASE("closing the window ends the application")
{
    EditorTest editor(completeRecord());
    editor.user.closeWindow();
    CHECK(user::didTerminate());
}

TEST_CASE("an editor that is gone leaves nothing behind that acts")
{
    {
        EditorTest editor(completeRecord());
        const std::weak_ptr<BREditorController> weak = editor.controller;
        editor.controller.reset();
        CHECK(weak.expired());
    }
    CHECK_FALSE(MainWindowUser().seesWindow());
}
