#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/NotificationCenter.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/platform/ScriptedWorkspace.h"
#include "tests/shell/support/EditorTest.h"
#include "update/BRUpdateController.h"
#include "update/BRVPreferencesController.h"

#include <algorithm>
#include <csignal>
#include <doctest/doctest.h>
#include <string>
#include <vector>

namespace authorization = scripted::authorization;
namespace workspace = scripted::workspace;
using platform::Authorization;
using platform::Dictionary;
using platform::ui::AlertStyle;
using Texts = std::vector<std::string>;

namespace {

enum Button { Update = 0, Download = 1, Later = 2 };

platform::Error updaterError(std::int64_t code, Dictionary userInfo = {})
{
    return {ZRKUpdaterErrorDomain, code, std::move(userInfo), nullptr};
}

Dictionary newVersion()
{
    return {{"HumanVersion", "2.1"}, {"URL", "https://example.com/Brevane-2.1.pkg"}, {"Version", 2100}};
}

// A check for updates against a scheduler helper that answers message 26 so.
class UpdateTest {
public:
    explicit UpdateTest(const std::optional<Dictionary>& info = std::nullopt, const Machine& machine = {})
        : scheduler((setUp(machine), ScheduleSettings()))
    {
        if (info)
            scheduler.answerMessage(26, replyWith(*info));
    }
    ~UpdateTest() { CHECK(user::preparedAnswers() == 0); }

    void check()
    {
        BRUpdateController::checkUpdatesWithCompletionHandler([this] {
            ++completions;
            openedAtEnd = workspace::openedURLs();
        });
    }
    // Runs until this many messages of the number were sent and answered.
    void waitFor(std::int64_t message, std::size_t number = 1)
    {
        REQUIRE(user::runEventsUntil([&] { return scheduler.count(message) >= number; }, 10000));
    }
    // Checks and waits until the completion has run.
    void checkToTheEnd()
    {
        check();
        REQUIRE(user::runEventsUntil([this] { return completions > 0; }, 10000));
        user::runEvents();
        CHECK(completions == 1);
    }
    // The one alert that was answered.
    static user::ShownAlert alert()
    {
        const auto alerts = user::takeAnsweredAlerts();
        REQUIRE(alerts.size() == 1);
        CHECK_FALSE(alerts[0].isSheet);
        return alerts[0];
    }

    PlayedScheduler scheduler;
    int completions = 0;
    Texts openedAtEnd; // until the completion ran
    int notifications = 0;
    platform::NotificationObserver observer{BRVDidEnableAutoUpdates, [this] { ++notifications; }};
};

std::vector<scripted::log::Message> loggedErrors()
{
    auto messages = scripted::log::messages();
    std::erase_if(messages, [](const auto& message) { return message.type != 16; });
    return messages;
}

} // namespace

TEST_CASE("a check asks the scheduler helper without an authorization and returns at once")
{
    UpdateTest test;
    scripted::service::hold();
    test.check();
    REQUIRE(scripted::service::waitForRequests(1));
    CHECK(scripted::service::requests()[0].mode == scripted::service::Mode::Asynchronous);
    CHECK(scripted::service::requests()[0].message == platform::ServiceDictionary{{"message", std::int64_t(26)}});
    user::runEvents();
    CHECK(test.completions == 0);
    CHECK(authorization::calls().empty());
    user::answerNextAlert(0);
    scripted::service::release();
    REQUIRE(user::runEventsUntil([&] { return test.completions == 1; }, 10000));
    UpdateTest::alert();
}

TEST_CASE("a new version is offered by name, with three choices")
{
    UpdateTest test(newVersion());
    user::answerNextAlert(Later);
    test.checkToTheEnd();
    const auto alert = UpdateTest::alert();
    CHECK(alert.messageText == "New version available.");
    CHECK(alert.informativeText == "Brevane 2.1 is available. Would you like to update now?");
    CHECK(alert.buttons == Texts{"Update", "Download", "Later"});
    CHECK(alert.style == AlertStyle::Informational);
    CHECK_FALSE(alert.checkBox);
    CHECK(workspace::openedURLs().empty());
    CHECK(workspace::launches().empty());
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{26});
}

TEST_CASE("a version without a name, and a reply that is empty, are offered all the same")
{
    for (const auto& info : {Dictionary(), Dictionary{{"URL", "https://example.com/"}}}) {
        UpdateTest test(info);
        user::answerNextAlert(Later);
        test.checkToTheEnd();
        CHECK(UpdateTest::alert().informativeText == "Brevane (null) is available. Would you like to update now?");
    }
}

TEST_CASE("a version's name is shown as it is, whatever stands in it")
{
    UpdateTest test(Dictionary{{"HumanVersion", "3 <b>%@</b> %d \xE2\x80\x9Cx\xE2\x80\x9D"}});
    user::answerNextAlert(Later);
    test.checkToTheEnd();
    CHECK(UpdateTest::alert().informativeText
          == "Brevane 3 <b>%@</b> %d \xE2\x80\x9Cx\xE2\x80\x9D is available. Would you like to update now?");
}

TEST_CASE("Download opens the package's address, or the web site's package, and ends the check")
{
    struct Case {
        Dictionary info;
        Texts opened;
    };
    const std::string webSite = "https://brevane.zerkolin.example/brevane/Brevane.pkg";
    for (const Case& each : std::vector<Case>{
             {newVersion(), {"https://example.com/Brevane-2.1.pkg"}},
             {Dictionary{{"HumanVersion", "2"}}, {webSite}},
             {Dictionary{{"URL", 5}}, {webSite}}, // of another type: as good as none
             {Dictionary{{"URL", "not a URL"}}, {}},
             {Dictionary{{"URL", ""}}, {}},
             {Dictionary{{"URL", "/etc/passwd"}}, {}},
         }) {
        UpdateTest test(each.info);
        user::answerNextAlert(Download);
        test.checkToTheEnd();
        CHECK(test.openedAtEnd == each.opened); // before the check ends, and nothing after it
        CHECK(workspace::openedURLs() == each.opened);
        CHECK(test.scheduler.count(27) == 0);
        UpdateTest::alert();
    }
}

TEST_CASE("Update launches the post-update tool, then asks for the installation, and never ends the check")
{
    UpdateTest test(newVersion());
    scripted::system::setRoot("/sandbox");
    user::answerNextAlert(Update);
    test.check();
    test.waitFor(27);
    user::runEventsUntil([] { return false; }, 50);
    const auto launches = workspace::launches();
    REQUIRE(launches.size() == 1);
    CHECK(launches[0].path == "/sandbox/Library/Brevane/com.zerkolin.brevane.post-update");
    CHECK(launches[0].signals.empty());
    CHECK(test.completions == 0);
    CHECK(authorization::calls(authorization::Operation::CopyRight)[0].name == BRVRightModifySettings1);
    UpdateTest::alert();
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("the post-update tool is running before the installation is asked for")
{
    UpdateTest test(newVersion());
    std::size_t launchesAtRequest = 0;
    scripted::service::setHandler([&](const platform::ServiceDictionary& request) -> platform::ServiceReply {
        if (std::get<std::int64_t>(request.at("message")) == 26)
            return replyWith(newVersion());
        launchesAtRequest = workspace::launches().size();
        return replyWithError(updaterError(ZRKUpdaterErrorInstall));
    });
    user::answerNextAlert(Update);
    user::answerNextAlert(0);
    test.checkToTheEnd();
    CHECK(launchesAtRequest == 1);
    user::takeAnsweredAlerts();
}

TEST_CASE("an installation that fails ends the tool with signal 15 before it is told, and then ends the check")
{
    UpdateTest test(newVersion());
    test.scheduler.refuseMessage(27, updaterError(ZRKUpdaterErrorDownload, {{"status-code", 404}}));
    bool alertAtSignal = true;
    std::size_t answeredAtSignal = 0;
    workspace::setSignalHandler([&](int) {
        alertAtSignal = user::currentAlert().has_value();
        answeredAtSignal = user::preparedAnswers();
    });
    user::answerNextAlert(Update);
    user::answerNextAlert(0);
    test.checkToTheEnd();
    CHECK_FALSE(alertAtSignal);
    CHECK(answeredAtSignal == 1); // the failure's alert had not come yet
    CHECK(workspace::launches()[0].signals == std::vector{SIGTERM});
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 2);
    CHECK(alerts[1].messageText == "Brevane was unable to update.");
    CHECK(alerts[1].informativeText.starts_with("Could not download update"));
    CHECK(alerts[1].buttons == Texts{"OK"});
    CHECK(alerts[1].style == AlertStyle::Warning);
}

TEST_CASE("every kind of failed installation is described by its own error")
{
    for (const auto& error : std::vector<platform::Error>{
             updaterError(ZRKUpdaterErrorMovePackage),
             updaterError(ZRKUpdaterErrorCannotUpdateNow),
             {BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr},
             {ZRKInstallerPackageErrorDomain, ZRKInstallerPackageErrorNotSigned, {}, nullptr},
             {ZRKSpawnerErrorDomain, ZRKSpawnerErrorSpawn, {}, nullptr},
         }) {
        UpdateTest test(newVersion());
        test.scheduler.refuseMessage(27, error);
        user::answerNextAlert(Update);
        user::answerNextAlert(0);
        test.checkToTheEnd();
        const auto alerts = user::takeAnsweredAlerts();
        REQUIRE(alerts.size() == 2);
        CHECK(alerts[1].messageText == "Brevane was unable to update.");
        CHECK(alerts[1].informativeText == ZRKError::localizedDescriptionForError(error));
        CHECK_FALSE(alerts[1].informativeText.empty());
    }
}

TEST_CASE("an installation whose authentication is dismissed ends the tool and the check and says nothing")
{
    UpdateTest test(newVersion());
    authorization::answerCopyRight(BRVRightModifySettings1, {Authorization::Canceled});
    user::answerNextAlert(Update);
    test.checkToTheEnd();
    CHECK(workspace::launches()[0].signals == std::vector{SIGTERM});
    CHECK(test.scheduler.count(27) == 0);
    CHECK(UpdateTest::alert().messageText == "New version available.");
}

TEST_CASE("a scheduler helper that dies during the installation is told, and the tool ends")
{
    UpdateTest test(newVersion());
    test.scheduler.answerMessage(27, std::unexpected(platform::ServiceError::Interrupted));
    user::answerNextAlert(Update);
    user::answerNextAlert(0);
    test.checkToTheEnd();
    CHECK(workspace::launches()[0].signals == std::vector{SIGTERM});
    CHECK(user::takeAnsweredAlerts()[1].informativeText
          == "Could not send message (27), the service disappeared (crash?) (com.zerkolin.brevane.scheduler).");
}

TEST_CASE("a tool that cannot be launched is logged as an error, and the installation goes on without it")
{
    UpdateTest test(newVersion());
    workspace::failLaunchWith(platform::Error{platform::POSIXErrorDomain, 2, {}, nullptr});
    test.scheduler.refuseMessage(27, updaterError(ZRKUpdaterErrorInstall));
    user::answerNextAlert(Update);
    user::answerNextAlert(0);
    test.checkToTheEnd();
    CHECK(workspace::launches().size() == 1);
    CHECK(workspace::launches()[0].signals.empty());
    CHECK(test.scheduler.count(27) == 1);
    const auto errors = loggedErrors();
    const auto isLaunch = [](const auto& message) {
        return message.text == "Failed to launch post-update tool. No such file or directory";
    };
    CHECK(std::ranges::count_if(errors, isLaunch) == 1);
    user::takeAnsweredAlerts();
}

TEST_CASE("up to date with automatic updates on: no check box, nothing sent")
{
    UpdateTest test;
    user::answerNextAlert(0);
    test.checkToTheEnd();
    const auto alert = UpdateTest::alert();
    CHECK(alert.messageText == "You are up to date.");
    CHECK(alert.informativeText == "You are currently using the latest version of Brevane.");
    CHECK(alert.buttons == Texts{"OK"});
    CHECK(alert.style == AlertStyle::Informational);
    CHECK_FALSE(alert.checkBox);
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{26, 18});
    CHECK(test.notifications == 0);
}

TEST_CASE("up to date with automatic updates off: a check box that is off, and left so changes nothing")
{
    UpdateTest test;
    test.scheduler.setInstallsUpdates(false);
    user::answerNextAlert(0);
    test.checkToTheEnd();
    const auto alert = UpdateTest::alert();
    CHECK(alert.checkBox == "Install updates automatically");
    CHECK_FALSE(alert.checkBoxIsOn);
    CHECK(test.scheduler.count(21) == 0);
    CHECK(test.notifications == 0);
    CHECK_FALSE(test.scheduler.installsUpdates());
}

TEST_CASE("ticking the check box switches automatic updates on, and that is posted")
{
    UpdateTest test;
    test.scheduler.setInstallsUpdates(false);
    user::tickAndAnswerNextAlert(0);
    test.checkToTheEnd();
    UpdateTest::alert();
    CHECK(test.scheduler.installsUpdates());
    CHECK(test.scheduler.payloads(21) == std::vector<Dictionary>{Dictionary{{"Enabled", true}}});
    CHECK(test.notifications == 1);
}

TEST_CASE("a ticked check box that the scheduler helper refuses, or whose prompt is dismissed, says and posts nothing")
{
    for (const bool dismissed : {false, true}) {
        UpdateTest test;
        test.scheduler.setInstallsUpdates(false);
        if (dismissed)
            authorization::answerCopyRight(BRVRightModifySettings1, {Authorization::Canceled});
        else
            test.scheduler.refuseMessage(21, {BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr});
        user::tickAndAnswerNextAlert(0);
        test.checkToTheEnd();
        UpdateTest::alert();
        CHECK(test.notifications == 0);
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("an unanswered question about automatic updates counts as off")
{
    for (const auto& reply : {platform::ServiceReply(std::unexpected(platform::ServiceError::Interrupted)),
                              replyWith(Dictionary{{"Enabled", "YES"}}), replyWith(Dictionary())}) {
        UpdateTest test;
        test.scheduler.answerMessage(18, reply);
        user::answerNextAlert(0);
        test.checkToTheEnd();
        CHECK(UpdateTest::alert().checkBox);
    }
}

TEST_CASE("the check box is a switch button before macOS 10.12, and large from macOS 11 on")
{
    struct Case {
        platform::OperatingSystemVersion system;
        bool switchButton, large;
    };
    for (const Case& each :
         {Case{{10, 9, 0}, true, false}, Case{{10, 11, 6}, true, false}, Case{{10, 12, 0}, false, false},
          Case{{10, 15, 7}, false, false}, Case{{11, 0, 0}, false, true}, Case{{14, 0, 0}, false, true}}) {
        UpdateTest test(std::nullopt, {.system = each.system});
        test.scheduler.setInstallsUpdates(false);
        user::tickAndAnswerNextAlert(0);
        test.checkToTheEnd();
        const auto alert = UpdateTest::alert();
        CHECK(alert.checkBox == "Install updates automatically");
        CHECK(alert.checkBoxIsLarge == each.large);
        CHECK(alert.checkBoxIsSwitchButton == each.switchButton);
        CHECK(test.notifications == 1);
    }
}

TEST_CASE("an open preferences window shows at once what the alert's check box switched on")
{
    UpdateTest test;
    test.scheduler.setInstallsUpdates(false);
    const auto preferences = BRVPreferencesController::create();
    preferences->showWindow();
    const WindowUser window("preferencesWindow");
    CHECK_FALSE(window.isOn("autoUpdatesCheckBox"));
    user::tickAndAnswerNextAlert(0);
    test.checkToTheEnd();
    UpdateTest::alert();
    CHECK(window.isOn("autoUpdatesCheckBox"));
}

TEST_CASE("every failure of a check is told in the error's own words, and nothing is tried again")
{
    std::vector<platform::Error> errors{
        updaterError(ZRKUpdaterErrorFetchInfo, {{"status-code", 503}}),
        updaterError(ZRKUpdaterErrorReadData),
        updaterError(ZRKUpdaterErrorInvalidInfo, {{"info", Dictionary{{"a", 1}}}}),
        updaterError(ZRKUpdaterErrorPhasedDeferral),
        updaterError(ZRKUpdaterErrorUntrustedServer),
        updaterError(ZRKUpdaterErrorTooManyRequests),
        {BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr},
        // Code 0 means up to date in the updater's domain alone.
        {BRVErrorDomain, 0, {}, nullptr},
        {ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled, {}, nullptr},
    };
    for (const auto& error : errors) {
        CAPTURE(error.domain);
        CAPTURE(error.code);
        UpdateTest test;
        test.scheduler.refuseMessage(26, error);
        user::answerNextAlert(0);
        test.checkToTheEnd();
        const auto alert = UpdateTest::alert();
        CHECK(alert.messageText == "Brevane was unable to check for updates.");
        CHECK(alert.informativeText == ZRKError::localizedDescriptionForError(error));
        CHECK(alert.buttons == Texts{"OK"});
        CHECK(alert.style == AlertStyle::Warning);
        CHECK(test.scheduler.messages() == std::vector<std::int64_t>{26});
    }
}

TEST_CASE("a check ends only when its last alert was answered")
{
    struct Case {
        std::int64_t message; // that fails
        platform::Error error;
        std::size_t alerts;
    };
    for (const Case& each : std::vector<Case>{{26, updaterError(ZRKUpdaterErrorUpToDate), 1},
                                              {26, updaterError(ZRKUpdaterErrorFetchInfo), 1},
                                              {27, updaterError(ZRKUpdaterErrorInstall), 2}}) {
        CAPTURE(each.error.code);
        UpdateTest test(newVersion());
        test.scheduler.refuseMessage(each.message, each.error);
        std::vector<int> completionsAtAlerts;
        user::answerEveryAlert([&](const user::ShownAlert&) {
            completionsAtAlerts.push_back(test.completions);
            return 0;
        });
        test.checkToTheEnd();
        user::answerEveryAlert(nullptr);
        CHECK(completionsAtAlerts == std::vector<int>(each.alerts, 0));
        user::takeAnsweredAlerts();
    }
}

TEST_CASE("a scheduler helper that is away, or goes away, fails the check")
{
    for (const auto failure : {platform::ServiceError::Invalid, platform::ServiceError::Interrupted}) {
        UpdateTest test;
        test.scheduler.answerWith(std::unexpected(failure));
        user::answerNextAlert(0);
        test.checkToTheEnd();
        const auto alert = UpdateTest::alert();
        CHECK(alert.messageText == "Brevane was unable to check for updates.");
        CHECK(alert.informativeText.starts_with("Could not send message (26)"));
    }
}
