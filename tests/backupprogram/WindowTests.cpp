#include "platform/linux/ui/tables/DataTable.h"
#include "platform/UserDefaults.h"
#include "protocol/BackupProgram.h"
#include "protocol/BackupStatus.h"
#include "protocol/ErrorCodes.h"
#include "scheduling/InstantDate.h"
#include "tests/backupprogram/BackupProgramTest.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedBackupFacility.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/shell/support/OpenPanelUser.h"
#include "tests/shell/support/WindowWatch.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <QApplication>
#include <QLineEdit>
#include <QTest>

using platform::Array;
using platform::Dictionary;
using scheduling::dateOf;

namespace {

const char* const chooseButton = "chooseProgramButton";
const char* const testButton = "testProgramButton";
const char* const undoButton = "undoProgramButton";
const char* const popUp = "programPopUp";

std::vector<std::string> rowsOf(const char* table)
{
    const auto* const widget =
        windowNamed("backupProgramWindow").findChild<platform::ui::DataTable*>(QLatin1String(table));
    std::vector<std::string> rows;
    for (int row = 0; row < widget->model()->rowCount(); ++row)
        rows.push_back(widget->model()->index(row, 0).data().toString().toStdString());
    return rows;
}

platform::Error refusal(const char* key, const char* expected, const char* path = nullptr)
{
    Dictionary info{{"key", key}, {"expected", expected}};
    if (path)
        info.set("path", path);
    return {BRVErrorDomain, BRVErrorWrongType, info, nullptr};
}

Dictionary runningStatus()
{
    return {{"State", "running"}, {"LastStart", dateOf(1000)}, {"Journal", Array()}};
}

Dictionary endedStatus(bool succeeded)
{
    return {{"State", "waiting"},
            {"LastStart", dateOf(1000)},
            {"LastEnd", dateOf(1060)},
            {"LastSucceeded", dateOf(succeeded ? 1060 : 10)},
            {"Journal",
             Array{Dictionary{{"At", dateOf(1060)},
                              {"Event", "end"},
                              {"Succeeded", succeeded},
                              {"Text", "The backup failed: its program ended with status 2."}}}}};
}

} // namespace

void BackupProgramTest::settle()
{
    for (int round = 0; round < 3; ++round)
        user::runEvents();
}

void BackupProgramTest::select(const std::string& program)
{
    const auto titles = user.itemTitles(popUp);
    const auto found = std::ranges::find(titles, program);
    REQUIRE_MESSAGE(found != titles.end(), program);
    user.choose(popUp, static_cast<int>(found - titles.begin()));
    BackupProgramTest::settle();
}

void BackupProgramTest::answerPanel(const std::string& path)
{
    answerOpenPanel(path);
    BackupProgramTest::settle();
}

void BackupProgramTest::cancelPanel()
{
    cancelOpenPanel();
    BackupProgramTest::settle();
}

Dictionary borgChoice(const Array& folders, const std::string& repository)
{
    return {{"Program", "borg"},
            {"Fields", Dictionary{{"Folders", folders}, {"Repository", repository}}},
            {"PreventSleep", false}};
}

TEST_CASE("nothing is asked before the window is shown, and each time that it is")
{
    BackupProgramTest test(offerOfPrograms({"borg"}));
    CHECK(test.scheduler.messages().empty());
    test.show();
    CHECK(test.user.seesWindow());
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{7});
    test.user.closeWindow();
    test.show();
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{7, 7});
}

TEST_CASE("without a choice the window says what that means, and lists what is installed first")
{
    BackupProgramTest test(offerOfPrograms({"rsnapshot", "service"}));
    test.show();
    CHECK(test.user.itemTitles(popUp)
          == std::vector<std::string>{"None", "rsnapshot", "A system service", "Borg (not installed)",
                                      "Back In Time (not installed)", "borgmatic (not installed)",
                                      "btrbk (not installed)", "restic (not installed)", "Timeshift (not installed)"});
    CHECK(test.user.selectedIndex(popUp) == 0);
    CHECK(test.user.text("programStateLabel") == "No backups are made while no backup program is chosen.");
    for (const auto* const row : {"installRow", "listsRow", "destinationRow", "secretFileRow", "wordRow", "unitRow",
                                  "programFaultRow", "preventSleepCheckBox", "restoreColumn", "testResultRow"})
        CHECK_FALSE(test.user.sees(row));
    for (const auto* const button : {chooseButton, testButton, undoButton})
        CHECK_FALSE(test.user.isEnabled(button));
}

TEST_CASE("where nothing is installed the window says what to install and how, and finds it when asked again")
{
    BackupProgramTest test(offerOfPrograms({"service"}));
    test.show();
    CHECK(test.user.text("programStateLabel")
          == "No backup program is installed. Borg is a good choice; this command installs it:");
    CHECK(test.user.text("installCommandLabel") == "sudo apt install borgbackup");
    test.scheduler.setBackupProgram(offerOfPrograms({"service", "borg"}));
    test.click("lookAgainButton");
    CHECK(test.user.itemTitles(popUp)[1] == "Borg");
    CHECK_FALSE(test.user.sees("installRow"));
}

TEST_CASE("a program that is not installed, or not set up, can be looked at but not chosen")
{
    BackupProgramTest test(offerWithoutSettings("btrbk", "/etc/btrbk/btrbk.conf"));
    test.show();
    test.select("restic (not installed)");
    CHECK(test.user.text("programStateLabel") == "restic is not installed. This command installs it:");
    CHECK(test.user.text("installCommandLabel") == "sudo apt install restic");
    CHECK_FALSE(test.user.sees("destinationRow"));
    CHECK_FALSE(test.user.isEnabled(chooseButton));
    test.select("btrbk");
    CHECK(test.user.text("programStateLabel").find("\"/etc/btrbk/btrbk.conf\"") != std::string::npos);
    CHECK(test.user.sees("lookAgainButton"));
    CHECK_FALSE(test.user.isEnabled(chooseButton));
}

TEST_CASE("each program asks for its own fields")
{
    BackupProgramTest test(offerOfPrograms({"borg", "restic", "rsnapshot", "service", "timeshift"}));
    test.show();
    const auto seen = [&] {
        std::vector<std::string> rows;
        for (const auto* const row :
             {"listsRow", "patternsColumn", "destinationRow", "secretFileRow", "wordRow", "unitRow"}) {
            if (test.user.sees(row))
                rows.emplace_back(row);
        }
        return rows;
    };
    using Rows = std::vector<std::string>;
    test.select("Borg");
    CHECK(seen() == Rows{"listsRow", "patternsColumn", "destinationRow"});
    test.select("restic");
    CHECK(seen() == Rows{"listsRow", "patternsColumn", "destinationRow", "secretFileRow"});
    test.select("rsnapshot");
    CHECK(seen() == Rows{"wordRow"});
    test.select("A system service");
    CHECK(seen() == Rows{"unitRow"});
    test.select("Timeshift");
    CHECK(seen().empty());
    CHECK(test.user.isEnabled(chooseButton));
}

TEST_CASE("Borg is chosen with folders from the file dialog, and the button then saves")
{
    TemporaryDirectory folder;
    folder.write("photos/a", "a");
    BackupProgramTest test(offerOfPrograms({"borg"}));
    test.show();
    test.select("Borg");
    CHECK(test.user.text(chooseButton) == "Choose");
    test.click("addFolderButton");
    BackupProgramTest::answerPanel(folder.file("photos"));
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{folder.file("photos")});
    test.click("destinationButton");
    BackupProgramTest::answerPanel(folder.path());
    CHECK(test.user.text("destinationField") == folder.path());
    test.type("destinationField", "/srv/my backups");
    test.type("patternField", "*.o");
    test.click("addPatternButton");
    test.user.tick("preventSleepCheckBox", true);
    test.click(chooseButton);
    REQUIRE(test.sent().size() == 1);
    CHECK(test.sent().back()
          == Dictionary{{"Program", "borg"},
                        {"Fields",
                         Dictionary{{"Folders", Array{folder.file("photos")}},
                                    {"Repository", "/srv/my backups"},
                                    {"Excludes", Array{"*.o"}}}},
                        {"PreventSleep", true}});
    CHECK(test.user.text(chooseButton) == "Save");
    CHECK_FALSE(test.user.isEnabled(chooseButton));
    CHECK(test.user.isEnabled(testButton));
    CHECK(test.user.text("restoreCommandLabel")
          == "sudo borg list '/srv/my backups'\ncd / && sudo borg extract '/srv/my backups'::ARCHIVE PATH");
    CHECK(test.user.text("backupPlaceLabel").find("in the folder /srv/my backups.") != std::string::npos);
}

TEST_CASE("a cancelled file dialog changes nothing")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    for (const auto* const button : {"addFolderButton", "destinationButton"}) {
        test.click(button);
        BackupProgramTest::cancelPanel();
    }
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/home"});
    CHECK(test.user.text("destinationField") == "/srv/b");
    CHECK_FALSE(test.user.isEnabled(undoButton));
}

TEST_CASE("the choice in force is shown, and can be tested but not saved again")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home", "/etc"}, "/srv/b")));
    test.show();
    CHECK(test.user.selectedIndex(popUp) == 1);
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/home", "/etc"});
    CHECK(test.user.text("destinationField") == "/srv/b");
    CHECK_FALSE(test.user.isOn("preventSleepCheckBox"));
    CHECK_FALSE(test.user.isEnabled(chooseButton));
    CHECK(test.user.isEnabled(testButton));
    test.user.tick("preventSleepCheckBox", true);
    CHECK(test.user.isEnabled(chooseButton));
    CHECK_FALSE(test.user.isEnabled(testButton));
    CHECK(test.user.text("testResultLabel") == "These changes are not saved yet. What is saved can be tested.");
}

TEST_CASE("None takes the choice away")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.select("None");
    test.click(chooseButton);
    CHECK(test.sent() == std::vector<Dictionary>{{{"PreventSleep", false}}});
    CHECK_FALSE(test.user.isEnabled(testButton));
}

TEST_CASE("edits are undone step by step, a removed folder too")
{
    BackupProgramTest test(offerOfPrograms({"borg", "restic"}, borgChoice({"/home", "/etc"}, "/srv/b")));
    test.show();
    test.click("removeFolderButton");
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/etc"});
    test.type("destinationField", "/srv/c");
    test.select("restic");
    test.user.tick("preventSleepCheckBox", true);
    test.click(undoButton);
    CHECK_FALSE(test.user.isOn("preventSleepCheckBox"));
    test.click(undoButton);
    CHECK(test.user.selectedIndex(popUp) == 1);
    CHECK(test.user.text("destinationField") == "/srv/c");
    while (test.user.isEnabled(undoButton))
        test.click(undoButton);
    CHECK(test.user.text("destinationField") == "/srv/b");
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/home", "/etc"});
    CHECK_FALSE(test.user.isEnabled(chooseButton));
    CHECK_FALSE(test.user.sees("testResultRow"));
}

TEST_CASE("another program takes over the fields that it shares, and the first one's come back")
{
    BackupProgramTest test(offerOfPrograms({"borg", "restic", "timeshift"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.select("Timeshift");
    test.select("restic");
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/home"});
    test.type("secretFileField", "/root/password");
    test.select("Borg");
    CHECK_FALSE(test.user.isEnabled(chooseButton)); // as it was
    test.select("restic");
    CHECK(test.user.text("secretFileField") == "/root/password");
}

TEST_CASE("a refused choice is told in words below the field that is wrong, until it is edited")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.scheduler.refuseMessage(12, refusal("Repository", BackupFieldExpectation::OfAdministrator, "/home/anna"));
    test.type("destinationField", "/home/anna/backups");
    test.click(chooseButton);
    CHECK(test.user.text("programFaultLabel").find("\"/home/anna\"") != std::string::npos);
    const auto top = [](const char* name) {
        const auto& window = windowNamed("backupProgramWindow");
        return window.findChild<QWidget*>(QLatin1String(name))->mapTo(&window, QPoint()).y();
    };
    CHECK(top("programFaultRow") > top("destinationRow"));
    CHECK(top("programFaultRow") < top("preventSleepCheckBox"));
    CHECK(test.user.text("destinationField") == "/home/anna/backups");
    test.type("destinationField", "/home/anna/backup");
    CHECK_FALSE(test.user.sees("programFaultRow"));
    test.scheduler.refuseMessage(12, {BRVErrorDomain, BRVErrorMissingValue, {{"key", "Folders"}}, nullptr});
    test.click(chooseButton);
    CHECK(test.user.text("programFaultLabel") == "Add at least one folder that is to be backed up.");
    CHECK(top("programFaultRow") < top("destinationRow"));
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a dismissed authentication says nothing and keeps the edits")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.type("destinationField", "/srv/c");
    scripted::authorization::answerCopyRight("com.zerkolin.brevane.settings.modify-1",
                                             {platform::Authorization::Canceled, platform::Authorization::Success});
    test.click(chooseButton);
    CHECK(test.sent().empty());
    CHECK_FALSE(test.user.sees("programFaultRow"));
    CHECK(test.user.text("destinationField") == "/srv/c");
    CHECK(test.user.isEnabled(chooseButton));
    test.click(chooseButton);
    CHECK(test.sent().size() == 1);
}

TEST_CASE("edits are there again after the window was closed, whatever the helper then says")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.type("destinationField", "/srv/c");
    test.user.closeWindow();
    test.scheduler.setBackupProgram(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/d")));
    test.show();
    CHECK(test.user.text("destinationField") == "/srv/c");
    test.click(chooseButton);
    CHECK(test.sent().back() == borgChoice({"/home"}, "/srv/c"));
}

TEST_CASE("without edits a window that is shown again shows what is in force now")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.user.closeWindow();
    test.scheduler.setBackupProgram(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/d")));
    test.show();
    CHECK(test.user.text("destinationField") == "/srv/d");
}

TEST_CASE("while there are edits the system asks before it ends the application, which keeps them then")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    CHECK(scripted::system::suddenTerminationDisabled() == 0);
    test.type("destinationField", "/srv/c");
    CHECK(scripted::system::suddenTerminationDisabled() == 1);
    test.type("destinationField", "/srv/d");
    CHECK(scripted::system::suddenTerminationDisabled() == 1);
    test.click(undoButton);
    CHECK(scripted::system::suddenTerminationDisabled() == 0);
}

TEST_CASE("edits that were not saved when the application ended are there in its next run, once")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.controller->keepEdits();
    CHECK_FALSE(platform::userDefault("BRVBackupProgramEdits")); // there are none
    test.type("destinationField", "/srv/c");
    test.controller->keepEdits();
    test.controller = BRVBackupProgramController::create();
    BackupProgramTest::settle();
    test.show();
    CHECK(test.user.text("destinationField") == "/srv/c");
    CHECK(test.user.isEnabled(chooseButton));
    test.click(undoButton);
    CHECK(test.user.text("destinationField") == "/srv/b");
    test.controller = BRVBackupProgramController::create();
    BackupProgramTest::settle();
    test.show();
    CHECK(test.user.text("destinationField") == "/srv/b");
}

TEST_CASE("a test has a backup made, shows that it goes on, and says how it ended")
{
    for (const bool succeeded : {true, false}) {
        BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
        test.scheduler.answerMessage(3, replyWith(Dictionary{{"Applied", true}}));
        test.scheduler.answerMessage(5, replyWith(runningStatus()));
        test.show();
        test.click(testButton);
        CHECK(test.scheduler.count(3) == 1);
        CHECK(test.scheduler.count(5) == 1);
        CHECK(test.user.text("testResultLabel").starts_with("A backup is being made."));
        CHECK_FALSE(test.user.isEnabled(testButton));
        scripted::notifications::arrive(BRVDidChangeBackupStatus);
        BackupProgramTest::settle();
        CHECK_FALSE(test.user.isEnabled(testButton));
        test.scheduler.answerMessage(5, replyWith(endedStatus(succeeded)));
        scripted::notifications::arrive(BRVDidChangeBackupStatus);
        BackupProgramTest::settle();
        CHECK(test.user.text("testResultLabel")
              == (succeeded ? "The test succeeded: a backup was made."
                            : "The test failed. The console shows what the program said. The backup failed: its "
                              "program ended with status 2."));
        CHECK(test.user.isEnabled(testButton));
        const auto asked = test.scheduler.count(5);
        scripted::notifications::arrive(BRVDidChangeBackupStatus);
        BackupProgramTest::settle();
        CHECK(test.scheduler.count(5) == asked); // it is over
    }
}

TEST_CASE("a test that cannot begin says why")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.scheduler.refuseMessage(3, {BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr});
    test.click(testButton);
    CHECK(test.user.text("testResultLabel") == "A backup operation is currently running.");
    CHECK(test.user.isEnabled(testButton));
    CHECK(test.scheduler.count(5) == 0);
    scripted::authorization::answerCopyRight("com.zerkolin.brevane.settings.modify-1",
                                             {platform::Authorization::Canceled});
    test.click(testButton);
    CHECK_FALSE(test.user.sees("testResultRow"));
}

TEST_CASE("a helper that goes away ends the test with words")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.scheduler.answerMessage(3, replyWith(Dictionary{{"Applied", true}}));
    test.scheduler.answerMessage(5, std::unexpected(platform::ServiceError::Interrupted));
    test.show();
    test.click(testButton);
    user::runEventsUntil([&] { return test.user.isEnabled(testButton); },
                         5000); // a lost connection tells its queue first
    CAPTURE(test.user.text("testResultLabel"));
    CHECK(test.user.text("testResultLabel").find("disappeared") != std::string::npos);
    CHECK(test.user.isEnabled(testButton));
}

TEST_CASE("a helper that does not answer, or is of another version, is told in place of programs")
{
    BackupProgramTest test(offerOfPrograms({"borg"}));
    test.scheduler.refuseMessage(7, {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {}, nullptr});
    test.show();
    CHECK(test.user.text("programStateLabel")
          == "The background scheduler is of another version, which starts no backup programs.");
    CHECK_FALSE(test.user.sees(popUp));
    CHECK_FALSE(test.user.isEnabled(chooseButton));
    test.scheduler.answerMessage(7, std::unexpected(platform::ServiceError::Invalid));
    test.click("lookAgainButton");
    user::runEventsUntil([&] { return test.user.text("programStateLabel").find("not available") != std::string::npos; },
                         5000);
    CHECK(test.user.text("programStateLabel").find("not available") != std::string::npos);
    test.scheduler.answerMessage(7, replyWith(offerOfPrograms({"borg"})));
    test.click("lookAgainButton");
    CHECK(test.user.sees(popUp));
}

TEST_CASE("where the system has a backup program of its own there is a sentence, and nothing is asked")
{
    BackupProgramTest test(offerOfPrograms({"borg"}));
    scripted::facility::setHasBackupProgram(true);
    test.show();
    CHECK(test.user.text("programStateLabel").starts_with("The system backs up with its own program."));
    for (const auto* const control : {popUp, chooseButton, testButton, undoButton, "lookAgainButton"})
        CHECK_FALSE(test.user.sees(control));
    CHECK(test.scheduler.messages().empty());
}

TEST_CASE("typing goes on in its field while rows come and go")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    auto& window = windowNamed("backupProgramWindow");
    auto* const field = window.findChild<QLineEdit*>(QStringLiteral("destinationField"));
    field->setFocus();
    field->setCursorPosition(4);
    for (const char character : {'/', 'x', 'y'}) {
        QTest::keyClick(QApplication::focusWidget(), character);
        BackupProgramTest::settle();
    }
    CHECK(field->text() == QStringLiteral("/srv/xy/b"));
    CHECK(field->cursorPosition() == 7);
    CHECK(field->hasFocus());
}

TEST_CASE("Return adds the pattern that is typed, and else presses the button")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.show();
    test.user.type("patternField", "*.tmp");
    test.user.press("patternField", Key::Return);
    CHECK(rowsOf("patternsTable") == std::vector<std::string>{"*.tmp"});
    CHECK(test.user.text("patternField").empty());
    CHECK(test.sent().empty());
    test.user.type("patternField", "*.log");
    test.user.press("destinationField", Key::Return); // what is still in the field belongs to the choice
    BackupProgramTest::settle();
    REQUIRE(test.sent().size() == 1);
    CHECK(*test.sent().back().dictionaryForKey("Fields")->arrayForKey("Excludes") == Array{"*.tmp", "*.log"});
}

TEST_CASE("a folder stands once in the list, and the row beside a removed one is selected")
{
    TemporaryDirectory folder;
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/a", "/b", "/c"}, "/srv/b")));
    test.show();
    test.click("addFolderButton");
    BackupProgramTest::answerPanel(folder.path());
    test.click("addFolderButton");
    BackupProgramTest::answerPanel(folder.path());
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/a", "/b", "/c", folder.path()});
    test.click("removeFolderButton");
    test.click("removeFolderButton");
    CHECK(rowsOf("foldersTable") == std::vector<std::string>{"/a", "/b"});
    test.click("removeFolderButton");
    test.click("removeFolderButton");
    CHECK(rowsOf("foldersTable").empty());
    CHECK_FALSE(test.user.isEnabled("removeFolderButton"));
}

TEST_CASE("a window that is gone leaves no test behind")
{
    BackupProgramTest test(offerOfPrograms({"borg"}, borgChoice({"/home"}, "/srv/b")));
    test.scheduler.answerMessage(3, replyWith(Dictionary{{"Applied", true}}));
    test.scheduler.answerMessage(5, replyWith(runningStatus()));
    test.show();
    test.click(testButton);
    const std::weak_ptr<BRVBackupProgramController> weak = test.controller;
    test.controller.reset();
    BackupProgramTest::settle();
    CHECK(weak.expired());
    scripted::notifications::arrive(BRVDidChangeBackupStatus);
    BackupProgramTest::settle();
    CHECK(test.scheduler.count(5) == 1);
}
