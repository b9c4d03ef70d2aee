#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Folder.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <vector>

namespace authorization = scripted::authorization;
using platform::Authorization;
using platform::Dictionary;
using Texts = std::vector<std::string>;

namespace {

enum Button { Enable = 0, MaybeLater = 1, Uninstall = 0, Cancel = 1 };

bool didAsk()
{
    return scripted::defaults::all().boolForKey("DidAskAboutAutoUpdates");
}

void quit(EditorTest& editor)
{
    editor.user.clickMenuItem("quitMenuItem");
    CHECK(user::didTerminate());
    CHECK(user::preparedAnswers() == 0);
}

// The application in a home with a log.
struct UninstallTest {
    UninstallTest() : editor(completeRecord())
    {
        scripted::system::setHomeDirectory(home.path());
        home.write("Library/Logs/Brevane/application.log", "log");
        home.write("Library/Logs/Brevane/deeper/application.1.log", "older log");
        home.write("Library/Logs/Other.log", "of another program");
        platform::setUserDefault("DidAskAboutAutoUpdates", true);
    }

    void choose(int button)
    {
        user::answerNextAlert(button);
        editor.user.clickMenuItem("uninstallMenuItem");
    }
    bool hasLogs() const { return std::filesystem::exists(home.file("Library/Logs/Brevane")); }
    // Until the reply to message 28 has been dealt with, as far as that shows.
    static void settle()
    {
        user::runEventsUntil([] { return false; }, 50);
    }

    TemporaryDirectory home;
    EditorTest editor;
};

} // namespace

TEST_CASE("the first end asks about automatic updates, and Enable switches them on")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    user::answerNextAlert(Enable);
    quit(editor);
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 1);
    CHECK(alerts[0].messageText == "Do you want to enable automatic updates?");
    CHECK(alerts[0].informativeText
          == "Updates are downloaded securely and verified before installation. You can change this setting at any "
             "time from the preferences.");
    CHECK(alerts[0].buttons == Texts{"Enable", "Maybe Later"});
    CHECK_FALSE(alerts[0].isSheet);
    CHECK(alerts[0].style == platform::ui::AlertStyle::Warning);
    CHECK(didAsk());
    CHECK(editor.scheduler.installsUpdates());
    CHECK(editor.scheduler.messages() == std::vector<std::int64_t>{1, 18, 21});
    CHECK(editor.scheduler.payloads(21) == std::vector<Dictionary>{Dictionary{{"Enabled", true}}});
}

TEST_CASE("the question is settled before it is answered")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    bool didAskAtQuestion = false;
    user::answerEveryAlert([&](const user::ShownAlert&) {
        didAskAtQuestion = didAsk();
        return int(MaybeLater);
    });
    quit(editor);
    user::answerEveryAlert(nullptr);
    CHECK(didAskAtQuestion);
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("an application that is ended while it asks will ask at a later end")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    bool didAskAfterEnd = true;
    user::answerEveryAlert([&](const user::ShownAlert&) {
        editor.controller->applicationWillTerminate();
        didAskAfterEnd = didAsk();
        return int(MaybeLater);
    });
    quit(editor);
    user::answerEveryAlert(nullptr);
    CHECK_FALSE(didAskAfterEnd);
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("Maybe Later sends nothing, and it is never asked again")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    user::answerNextAlert(MaybeLater);
    quit(editor);
    CHECK(didAsk());
    CHECK(editor.scheduler.messages() == std::vector<std::int64_t>{1, 18});
    CHECK(editor.controller->applicationShouldTerminate());
    CHECK(editor.scheduler.messages() == std::vector<std::int64_t>{1, 18});
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("whoever has automatic updates already is not asked, and the question is settled")
{
    EditorTest editor(completeRecord());
    quit(editor);
    CHECK(didAsk());
    CHECK(editor.scheduler.messages() == std::vector<std::int64_t>{1, 18});
    CHECK(user::takeAnsweredAlerts().empty());
}

TEST_CASE("a settled question sends nothing at the end")
{
    EditorTest editor(completeRecord());
    platform::setUserDefault("DidAskAboutAutoUpdates", true);
    editor.scheduler.setInstallsUpdates(false);
    quit(editor);
    CHECK(editor.scheduler.messages() == std::vector<std::int64_t>{1});
}

TEST_CASE("without an answer of the scheduler helper the question waits for a later end")
{
    for (const auto& reply : {platform::ServiceReply(std::unexpected(platform::ServiceError::Invalid)),
                              platform::ServiceReply(std::unexpected(platform::ServiceError::Interrupted)),
                              replyWithError({BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr})}) {
        EditorTest editor(completeRecord());
        editor.scheduler.setInstallsUpdates(false);
        editor.scheduler.answerMessage(18, reply);
        quit(editor);
        CHECK_FALSE(didAsk());
        CHECK(scripted::defaults::all().empty());
        CHECK(user::takeAnsweredAlerts().empty());

        editor.scheduler.answerMessage(18, replyWith(Dictionary{{"Enabled", false}}));
        user::answerNextAlert(MaybeLater);
        CHECK(editor.controller->applicationShouldTerminate());
        CHECK(didAsk());
        user::takeAnsweredAlerts();
    }
}

TEST_CASE("an answer without the setting counts as off, and is asked about")
{
    EditorTest editor(completeRecord());
    editor.scheduler.answerMessage(18, replyWith(Dictionary{{"Enabled", "YES"}}));
    user::answerNextAlert(MaybeLater);
    quit(editor);
    CHECK(didAsk());
    user::takeAnsweredAlerts();
}

TEST_CASE("a scheduler helper that refuses to enable automatic updates is not told of")
{
    for (const bool dismissed : {false, true}) {
        EditorTest editor(completeRecord());
        editor.scheduler.setInstallsUpdates(false);
        if (dismissed)
            authorization::answerCopyRight(BRVRightModifySettings1, {Authorization::Canceled});
        else
            editor.scheduler.refuseMessage(21, {BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr});
        user::answerNextAlert(Enable);
        quit(editor);
        CHECK(didAsk());
        CHECK(user::takeAnsweredAlerts().size() == 1);
    }
}

TEST_CASE("defaults that cannot be written keep nobody from quitting")
{
    EditorTest editor(completeRecord());
    scripted::defaults::setReadOnly(true);
    quit(editor);
    CHECK_FALSE(didAsk());
}

TEST_CASE("closing the main window asks as well, without a window on screen")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    user::answerNextAlert(Enable);
    editor.user.closeWindow();
    CHECK(user::didTerminate());
    CHECK(editor.scheduler.installsUpdates());
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("quitting again while the question is open asks it once")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setInstallsUpdates(false);
    user::answerEveryAlert([&](const user::ShownAlert&) {
        editor.controller->quit();
        editor.controller->quit();
        return int(MaybeLater);
    });
    quit(editor);
    user::answerEveryAlert(nullptr);
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("a launch that failed ends through the same question, which the absent scheduler helper spares")
{
    setUp({});
    user::answerNextAlert(2);
    const auto controller = BREditorController::create();
    user::launch(controller);
    CHECK(user::didTerminate());
    CHECK(user::takeAnsweredAlerts().size() == 1);
    CHECK_FALSE(didAsk());
}

TEST_CASE("uninstalling asks first, and cancelling changes nothing")
{
    UninstallTest test;
    test.choose(Cancel);
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 1);
    CHECK(alerts[0].messageText == "Are you sure you want to uninstall Brevane?");
    CHECK(alerts[0].informativeText == "You can't undo this action.");
    CHECK(alerts[0].buttons == Texts{"Uninstall", "Cancel"});
    CHECK_FALSE(alerts[0].isSheet);
    CHECK(alerts[0].style == platform::ui::AlertStyle::Warning);
    CHECK(test.hasLogs());
    CHECK(didAsk());
    CHECK(test.editor.scheduler.messages() == std::vector<std::int64_t>{1});
}

TEST_CASE("uninstalling removes the logs and the defaults, then asks the scheduler helper for the rest")
{
    UninstallTest test;
    test.choose(Uninstall);
    CHECK_FALSE(test.hasLogs());
    CHECK(std::filesystem::exists(test.home.file("Library/Logs/Other.log")));
    CHECK(scripted::defaults::removals() == 1);
    CHECK(scripted::defaults::all().empty());
    REQUIRE(user::runEventsUntil([&] { return test.editor.scheduler.count(28) == 1; }, 10000));
    UninstallTest::settle();
    CHECK(scripted::service::requests().back().mode == scripted::service::Mode::Asynchronous);
    CHECK(authorization::calls(authorization::Operation::CopyRight).back().name == BRVRightUninstall);
    CHECK_FALSE(user::currentAlert());
    CHECK_FALSE(user::didTerminate()); // the rest is the scheduler helper's work
    CHECK(test.editor.user.seesWindow());
    user::takeAnsweredAlerts();
}

TEST_CASE("what is the user's is gone when the scheduler helper is asked for the rest")
{
    UninstallTest test;
    bool isGone = false;
    scripted::service::setHandler([&](const platform::ServiceDictionary&) {
        isGone = !test.hasLogs() && scripted::defaults::removals() == 1;
        return replyWith(Dictionary());
    });
    test.choose(Uninstall);
    CHECK(user::runEventsUntil([&] { return isGone; }, 10000));
    UninstallTest::settle();
    user::takeAnsweredAlerts();
}

TEST_CASE("a failed uninstallation is told, and what is gone stays gone")
{
    UninstallTest test;
    test.editor.scheduler.refuseMessage(28, {BRVErrorDomain, BRVErrorPeersConnected, {}, nullptr});
    user::answerNextAlert(Uninstall);
    user::answerNextAlert(0);
    test.editor.user.clickMenuItem("uninstallMenuItem");
    REQUIRE(user::runEventsUntil([] { return user::preparedAnswers() == 0; }, 10000));
    UninstallTest::settle();
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 2);
    CHECK(alerts[1].messageText == "Could not uninstall.");
    CHECK_FALSE(alerts[1].informativeText.empty());
    CHECK(alerts[1].buttons == Texts{"OK"});
    CHECK_FALSE(test.hasLogs());
    CHECK(scripted::defaults::removals() == 1);
}

TEST_CASE("an uninstallation whose authentication is dismissed says nothing, and what is gone stays gone")
{
    UninstallTest test;
    authorization::answerCopyRight(BRVRightUninstall, {Authorization::Canceled});
    test.choose(Uninstall);
    UninstallTest::settle();
    CHECK(test.editor.scheduler.count(28) == 0);
    CHECK_FALSE(test.hasLogs());
    CHECK(scripted::defaults::removals() == 1);
    CHECK_FALSE(user::currentAlert());
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("logs that are not there, or defaults that stay, do not stop an uninstallation")
{
    UninstallTest test;
    std::filesystem::remove_all(test.home.file("Library"));
    scripted::defaults::setReadOnly(true);
    test.choose(Uninstall);
    CHECK(user::runEventsUntil([&] { return test.editor.scheduler.count(28) == 1; }, 10000));
    user::takeAnsweredAlerts();
}

TEST_CASE("defaults go also when the logs cannot be removed, and the scheduler helper is asked")
{
    UninstallTest test;
    std::filesystem::remove_all(test.home.file("Library"));
    test.home.write("Library", "in the way of the folder");
    REQUIRE_FALSE(platform::removeFolder(test.home.file("Library/Logs/Brevane")));
    test.choose(Uninstall);
    CHECK(scripted::defaults::removals() == 1);
    CHECK(scripted::defaults::all().empty());
    CHECK(user::runEventsUntil([&] { return test.editor.scheduler.count(28) == 1; }, 10000));
    UninstallTest::settle();
    user::takeAnsweredAlerts();
}

TEST_CASE("a log folder that is a link goes without what it points to")
{
    UninstallTest test;
    std::filesystem::rename(test.home.file("Library/Logs/Brevane"), test.home.file("elsewhere"));
    std::filesystem::create_symlink(test.home.file("elsewhere"), test.home.file("Library/Logs/Brevane"));
    test.choose(Uninstall);
    CHECK_FALSE(std::filesystem::is_symlink(test.home.file("Library/Logs/Brevane")));
    CHECK(std::filesystem::exists(test.home.file("elsewhere/application.log")));
    UninstallTest::settle();
    user::takeAnsweredAlerts();
}

TEST_CASE("an end after an uninstallation asks nothing, since nobody answers")
{
    UninstallTest test;
    test.choose(Uninstall);
    UninstallTest::settle();
    test.editor.scheduler.answerWith(std::unexpected(platform::ServiceError::Invalid));
    quit(test.editor);
    CHECK(user::takeAnsweredAlerts().size() == 1);
    CHECK(scripted::defaults::all().empty());
}
