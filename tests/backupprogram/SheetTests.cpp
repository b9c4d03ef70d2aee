#include "platform/UserDefaults.h"
#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedBackupFacility.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/OfferedPrograms.h"

#include <doctest/doctest.h>

using platform::Dictionary;

namespace {

// Applies a change, and dismisses the sheet that tells of it.
void applyAndDismiss(EditorTest& editor)
{
    editor.user.click("suspendCheckBox");
    REQUIRE(editor.applyAndDismiss());
    user::runEvents();
}

} // namespace

TEST_CASE("after an apply without a backup program a second sheet offers to choose one")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
    editor.user.click("suspendCheckBox");
    editor.apply();
    CHECK(editor.user.alert().informativeText == "Brevane will now enforce the new scheduling.");
    editor.user.dismissAlert();
    user::runEvents();
    const auto sheet = editor.user.alert();
    CHECK(sheet.messageText == "No backup program is chosen.");
    CHECK(sheet.informativeText == "No backups are made while no backup program is chosen.");
    CHECK(sheet.buttons == std::vector<std::string>{"Choose…", "Later"});
    CHECK(sheet.isSheet);
    editor.user.answer("Choose…");
    user::runEvents();
    CHECK(WindowUser("backupProgramWindow").seesWindow());
}

TEST_CASE("Later leaves it at that until the next apply")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
    for (int round = 0; round < 2; ++round) {
        applyAndDismiss(editor);
        editor.user.answer("Later");
        user::runEvents();
        CHECK_FALSE(user::currentAlert());
        CHECK_FALSE(WindowUser("backupProgramWindow").seesWindow());
    }
    CHECK(editor.scheduler.count(7) == 2);
    CHECK_FALSE(editor.apply()); // nothing was changed
    editor.user.dismissAlert();
    user::runEvents();
    CHECK_FALSE(user::currentAlert());
    CHECK(editor.scheduler.count(7) == 2);
}

TEST_CASE("the second sheet also follows the one that warns of the system's own scheduler")
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", "com.apple.TimeMachine", true);
    editor.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
    applyAndDismiss(editor);
    CHECK(editor.user.alert().messageText == "No backup program is chosen.");
}

TEST_CASE("there is no second sheet with a program, without backups, or with a helper that knows of none")
{
    const auto appliesWithoutMore = [](EditorTest& editor) {
        applyAndDismiss(editor);
        return !user::currentAlert();
    };
    {
        EditorTest editor(completeRecord());
        editor.scheduler.setBackupProgram({{"Program", "gone"}});
        CHECK(appliesWithoutMore(editor));
    }
    {
        EditorTest editor(completeRecordWith("Backups", false));
        editor.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
        editor.user.click("snapshotsCheckBox");
        REQUIRE(editor.applyAndDismiss());
        user::runEvents();
        CHECK_FALSE(user::currentAlert());
        CHECK(editor.scheduler.count(7) == 0);
    }
    {
        EditorTest editor(completeRecord());
        editor.scheduler.refuseMessage(7, {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {}, nullptr});
        CHECK(appliesWithoutMore(editor));
    }
    {
        EditorTest editor(completeRecord());
        scripted::facility::setHasBackupProgram(true);
        editor.scheduler.setBackupProgram(offerOfPrograms({}));
        CHECK(appliesWithoutMore(editor));
        CHECK(editor.scheduler.count(7) == 0);
    }
}

TEST_CASE("the application menu opens the window, and the application's end keeps its edits")
{
    EditorTest editor(completeRecord());
    editor.scheduler.setBackupProgram(
        offerOfPrograms({"borg"}, {{"Program", "borg"}, {"Fields", Dictionary{{"Repository", "/srv/b"}}}}));
    editor.user.clickMenuItem("backupProgramMenuItem");
    user::runEvents();
    WindowUser window("backupProgramWindow");
    REQUIRE(window.seesWindow());
    window.replaceText("destinationField", "/srv/c");
    editor.controller->applicationWillTerminate();
    const auto kept = platform::userDefault("BRVBackupProgramEdits");
    REQUIRE(kept);
    CHECK(*kept->dictionary()->dictionaryForKey("Fields") == Dictionary{{"Repository", "/srv/c"}});
}
