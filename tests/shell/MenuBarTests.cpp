#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/platform/ScriptedWorkspace.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/support/EnvironmentVariable.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <vector>

using platform::Dictionary;

namespace {

// Nothing but the menus is of interest: no end of the application asks anything.
struct MenuTest : EditorTest {
    MenuTest() : EditorTest(completeRecord()) { }

    bool isEnabled(std::string_view item) const { return user.menuItem(item)->isEnabled(); }
    void choose(std::string_view item) { user.clickMenuItem(item); }
    bool waitUntilEnabled(std::string_view item) const
    {
        return user::runEventsUntil([&] { return isEnabled(item); }, 10000);
    }
};

platform::ServiceReply newVersion()
{
    return replyWith(Dictionary{{"HumanVersion", "2.1"}});
}

} // namespace

TEST_CASE("every menu item that acts has its key")
{
    struct Case {
        const char* item;
        const char* key;
    };
    MenuTest test;
    for (const Case& each : {Case{"aboutMenuItem", ""},
                             {"preferencesMenuItem", ","},
                             {"checkUpdatesMenuItem", ""},
                             {"uninstallMenuItem", ""},
                             {"showCurrentSettingsMenuItem", ""},
                             {"quitMenuItem", "q"},
                             {"undoMenuItem", "z"},
                             {"redoMenuItem", "Z"},
                             {"cutMenuItem", "x"},
                             {"copyMenuItem", "c"},
                             {"pasteMenuItem", "v"},
                             {"selectAllMenuItem", "a"},
                             {"minimiseMenuItem", "m"},
                             {"closeMenuItem", "w"},
                             {"mainWindowMenuItem", "0"},
                             {"localSnapshotsMenuItem", "1"},
                             {"consoleMenuItem", "2"},
                             {"bringAllToFrontMenuItem", ""},
                             {"helpMenuItem", ""}, // F1, which is no key equivalent of letters
                             {"openWebSiteMenuItem", ""},
                             {"contactByMailMenuItem", ""}}) {
        CAPTURE(each.item);
        CHECK(test.user.menuItem(each.item)->keyEquivalent() == each.key);
        CHECK_FALSE(test.user.menuItem(each.item)->title().empty());
    }
}

TEST_CASE("the preferences open from the menu and by their key, one window however often")
{
    MenuTest test;
    const WindowUser preferences("preferencesWindow");
    CHECK_FALSE(preferences.seesWindow());
    test.user.pressKeys("Ctrl+,");
    CHECK(preferences.seesWindow());
    CHECK(user::activeWindow() == "preferencesWindow");

    test.user.pressKeys("Ctrl+0");
    CHECK(user::activeWindow() == "mainWindow");
    test.choose("preferencesMenuItem");
    CHECK(user::activeWindow() == "preferencesWindow");
    CHECK(user::windows() == std::vector<std::string>{"mainWindow", "preferencesWindow"});
    CHECK(test.scheduler.count(18) == 1);
}

TEST_CASE("the console opens from the menu and by its key, one window however often")
{
    MenuTest test;
    test.user.pressKeys("Ctrl+2");
    CHECK(user::activeWindow() == "consoleWindow");
    test.user.pressKeys("Ctrl+0");
    CHECK(user::activeWindow() == "mainWindow");
    test.choose("consoleMenuItem");
    CHECK(user::activeWindow() == "consoleWindow");
    CHECK(user::windows() == std::vector<std::string>{"consoleWindow", "mainWindow"});
}

TEST_CASE("the local snapshots open from the menu and by their key, one window however often")
{
    MenuTest test;
    test.user.pressKeys("Ctrl+1");
    CHECK(user::activeWindow() == "localSnapshotsWindow");
    test.user.pressKeys("Ctrl+0");
    CHECK(user::activeWindow() == "mainWindow");
    test.choose("localSnapshotsMenuItem");
    CHECK(user::activeWindow() == "localSnapshotsWindow");
    CHECK(user::windows() == std::vector<std::string>{"localSnapshotsWindow", "mainWindow"});
}

TEST_CASE("before macOS 10.13 there are no local snapshots to open, and the console has their key")
{
    EditorTest editor(completeRecord(), {.system = {10, 12, 6}});
    CHECK_THROWS_AS(editor.user.clickMenuItem("localSnapshotsMenuItem"), std::logic_error);
    editor.user.pressKeys("Ctrl+1");
    CHECK(user::windows() == std::vector<std::string>{"consoleWindow", "mainWindow"});
}

TEST_CASE("the menus' keys work in every window")
{
    MenuTest test;
    test.choose("preferencesMenuItem");
    WindowUser preferences("preferencesWindow");
    preferences.pressKeys("Ctrl+0");
    CHECK(user::activeWindow() == "mainWindow");
    test.user.click("suspendCheckBox");
    CHECK_FALSE(test.user.isOn("suspendCheckBox"));
    preferences.pressKeys("Ctrl+R"); // the console's, and nobody's here
    CHECK_FALSE(test.user.isOn("suspendCheckBox"));
    preferences.pressKeys("Ctrl+W");
    CHECK_FALSE(preferences.seesWindow());
    CHECK(test.user.seesWindow());
    CHECK_FALSE(user::didTerminate());
}

TEST_CASE("a sheet on the main window takes the menus' keys away, and leaves the other windows their own")
{
    MenuTest test;
    test.choose("preferencesMenuItem");
    WindowUser preferences("preferencesWindow");
    test.controller->displaySystemSchedulerCheckAlert("Title", "Message.");
    preferences.pressKeys("Ctrl+Q");
    CHECK_FALSE(user::didTerminate());
    preferences.pressKeys("Ctrl+W");
    CHECK_FALSE(preferences.seesWindow());
}

TEST_CASE("closing another window leaves the application running, closing the main one closes them all and ends it")
{
    MenuTest test;
    test.choose("preferencesMenuItem");
    user::closeWindow("preferencesWindow");
    CHECK_FALSE(user::didTerminate());
    test.choose("preferencesMenuItem");
    test.user.closeWindow();
    CHECK(user::didTerminate());
    CHECK(user::windows().empty());
}

TEST_CASE("showing the current settings throws away edits")
{
    MenuTest test;
    test.user.click("suspendCheckBox");
    test.user.replaceText("intervalField", "7");
    test.choose("showCurrentSettingsMenuItem");
    CHECK(test.user.isOn("suspendCheckBox"));
    CHECK(test.user.text("intervalField") == "90");
    CHECK(test.scheduler.fetches() == 1);
}

TEST_CASE("edits that showing the current settings threw away come back with Undo, and go again")
{
    MenuTest test;
    CHECK_THROWS_AS(test.choose("undoMenuItem"), std::logic_error);
    test.user.click("suspendCheckBox");
    test.user.replaceText("intervalField", "7");
    test.user.click("advancedSettingsButton");
    test.user.click("dontRunWhenPassiveCheckBox");
    test.choose("showCurrentSettingsMenuItem");
    CHECK(test.user.isOn("suspendCheckBox"));
    for (int turn = 0; turn < 2; ++turn) {
        test.choose("undoMenuItem");
        CHECK_FALSE(test.user.isOn("suspendCheckBox"));
        CHECK(test.user.text("intervalField") == "7");
        CHECK(test.user.isOn("dontRunWhenPassiveCheckBox"));
        test.choose("undoMenuItem");
        CHECK(test.user.isOn("suspendCheckBox"));
        CHECK(test.user.text("intervalField") == "90");
    }
}

TEST_CASE("showing the current settings when nothing is edited leaves nothing to undo")
{
    MenuTest test;
    test.choose("showCurrentSettingsMenuItem");
    CHECK_THROWS_AS(test.choose("undoMenuItem"), std::logic_error);
}

TEST_CASE("About tells the version, in one panel that closes by itself alone")
{
    MenuTest test;
    scripted::system::setBundleVersion("7.8.9");
    test.choose("aboutMenuItem");
    test.choose("aboutMenuItem");
    CHECK(user::windows() == std::vector<std::string>{"aboutPanel", "mainWindow"});
    CHECK(user::textsIn("aboutPanel") == std::vector<std::string>{"Brevane", "Version 7.8.9"});
    user::closeWindow("aboutPanel");
    CHECK_FALSE(user::didTerminate());
    CHECK(user::windows() == std::vector<std::string>{"mainWindow"});
}

TEST_CASE("the links of About open the web site and the support mail, and leave the panel open")
{
    MenuTest test;
    test.choose("aboutMenuItem");
    user::pressButton("aboutPanel", "Go to Web Site");
    CHECK(scripted::workspace::openedURLs() == std::vector<std::string>{"https://brevane.zerkolin.example/brevane/"});
    user::pressButton("aboutPanel", "Ask for Support");
    CHECK(scripted::workspace::openedURLs().size() == 2);
    CHECK(scripted::workspace::openedURLs().back().starts_with("mailto:"));
    user::pressButton("aboutPanel", "OK");
    CHECK(user::windows() == std::vector<std::string>{"mainWindow"});
}

TEST_CASE("the main window says that Brevane is being updated, and no longer once that has failed")
{
    MenuTest test;
    test.scheduler.answerMessage(26, replyWith(Dictionary{{"HumanVersion", "9"}}));
    CHECK(user::titleOf("mainWindow") == "Brevane");
    std::string title;
    test.scheduler.refuseMessage(27, {ZRKUpdaterErrorDomain, ZRKUpdaterErrorInstall, {}, nullptr});
    user::answerEveryAlert([&title](const user::ShownAlert& alert) {
        if (alert.messageText != "New version available.")
            title = user::titleOf("mainWindow");
        return 0;
    });
    std::string titleMeanwhile;
    scripted::workspace::setSignalHandler(
        [&titleMeanwhile](int) { titleMeanwhile = user::titleOf("mainWindow"); }); // to the tool, before it is told
    test.choose("checkUpdatesMenuItem");
    CHECK(test.waitUntilEnabled("checkUpdatesMenuItem"));
    CHECK(titleMeanwhile == "Brevane is being updated");
    CHECK(title == "Brevane");
    test.scheduler.answerMessage(27, platform::ServiceDictionary{});
    test.choose("checkUpdatesMenuItem");
    CHECK(user::runEventsUntil([] { return user::titleOf("mainWindow") == "Brevane is being updated"; }, 10'000));
    user::answerEveryAlert(nullptr);
    user::takeAnsweredAlerts();
}

TEST_CASE("while a check for updates is on its way there cannot be another, and everything else can be chosen")
{
    MenuTest test;
    scripted::service::hold();
    test.choose("checkUpdatesMenuItem");
    CHECK_FALSE(test.isEnabled("checkUpdatesMenuItem"));
    CHECK_THROWS_AS(test.choose("checkUpdatesMenuItem"), std::logic_error);
    for (const auto* const item :
         {"aboutMenuItem", "preferencesMenuItem", "uninstallMenuItem", "quitMenuItem", "showCurrentSettingsMenuItem",
          "mainWindowMenuItem", "openWebSiteMenuItem", "contactByMailMenuItem"})
        CHECK(test.isEnabled(item));
    REQUIRE(scripted::service::waitForRequests(2));
    user::answerNextAlert(0);
    scripted::service::release();
    CHECK(test.waitUntilEnabled("checkUpdatesMenuItem"));
    CHECK(test.scheduler.count(26) == 1);
}

TEST_CASE("a check can be made again after each outcome that ends it")
{
    struct Case {
        platform::ServiceReply reply;
        std::vector<int> answers;
    };
    const auto upToDate = replyWithError({ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate, {}, nullptr});
    const auto failed = replyWithError({ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo, {}, nullptr});
    for (const Case& each : std::vector<Case>{
             {upToDate, {0}}, {failed, {0}}, {newVersion(), {1}}, {newVersion(), {2}}, {newVersion(), {0, 0}}}) {
        MenuTest test;
        test.scheduler.answerMessage(26, each.reply);
        test.scheduler.refuseMessage(27, {ZRKUpdaterErrorDomain, ZRKUpdaterErrorInstall, {}, nullptr});
        for (const int answer : each.answers)
            user::answerNextAlert(answer);
        test.choose("checkUpdatesMenuItem");
        CHECK(test.waitUntilEnabled("checkUpdatesMenuItem"));
        CHECK(user::takeAnsweredAlerts().size() == each.answers.size());

        test.scheduler.answerMessage(26, upToDate);
        user::answerNextAlert(0);
        test.choose("checkUpdatesMenuItem");
        CHECK(test.waitUntilEnabled("checkUpdatesMenuItem"));
        CHECK(user::takeAnsweredAlerts().size() == 1);
        CHECK(test.scheduler.count(26) == 2);
    }
}

TEST_CASE("after an installation that was accepted there is no further check")
{
    MenuTest test;
    test.scheduler.answerMessage(26, newVersion());
    user::answerNextAlert(0);
    test.choose("checkUpdatesMenuItem");
    REQUIRE(user::runEventsUntil([&] { return test.scheduler.count(27) == 1; }, 10000));
    user::runEventsUntil([] { return false; }, 50);
    CHECK_FALSE(test.isEnabled("checkUpdatesMenuItem"));
    CHECK(test.isEnabled("quitMenuItem"));
}

TEST_CASE("a check whose answer comes after the application is gone is told to nobody's window")
{
    scripted::service::reset();
    {
        MenuTest test;
        scripted::service::hold();
        test.choose("checkUpdatesMenuItem");
        REQUIRE(scripted::service::waitForRequests(2));
    }
    user::answerNextAlert(0);
    scripted::service::release();
    CHECK(user::runEventsUntil([] { return user::preparedAnswers() == 0; }, 10000));
    user::runEvents();
    CHECK(user::takeAnsweredAlerts().at(0).messageText == "You are up to date.");
}

TEST_CASE("help opens from the menu and by its key, in the user's language")
{
    MenuTest test;
    CHECK(scripted::workspace::openedFiles().empty());
    const EnvironmentVariable all("LC_ALL", "C");
    test.choose("helpMenuItem");
    all.put("de_AT.UTF-8");
    const EnvironmentVariable list("LANGUAGE", "pt:de_AT:fr");
    test.user.pressKeys("F1");
    const auto opened = scripted::workspace::openedFiles();
    REQUIRE(opened.size() == 2);
    CHECK(opened[0].ends_with("/help/en/index.html"));
    CHECK(opened[1].ends_with("/help/de/index.html"));
    for (const auto& page : opened)
        CHECK(std::filesystem::exists(page));
}

TEST_CASE("the Edit menu works in the interval's field")
{
    MenuTest test;
    test.user.press("intervalField", Key::End);
    test.choose("selectAllMenuItem");
    test.choose("copyMenuItem");
    test.user.replaceText("intervalField", "7");
    test.choose("selectAllMenuItem");
    test.choose("pasteMenuItem");
    CHECK(test.user.text("intervalField") == "90");
    test.choose("undoMenuItem");
    CHECK(test.user.text("intervalField") == "7");
    test.choose("redoMenuItem");
    CHECK(test.user.text("intervalField") == "90");
}

TEST_CASE("bringing all to the front keeps the keyboard where it is")
{
    MenuTest test;
    test.choose("preferencesMenuItem");
    test.user.pressKeys("Ctrl+0");
    test.choose("bringAllToFrontMenuItem");
    CHECK(user::activeWindow() == "mainWindow");
    CHECK(user::windows().size() == 2);
}
