#include "messaging/ZRKError.h"
#include "platform/linux/ui/windows/InterfaceWindow.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleRanges.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedBackupFacility.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/platform/ScriptedVolumes.h"
#include "tests/shell/support/FirstStartTest.h"
#include "tests/shell/support/OpenPanelUser.h"
#include "tests/shell/support/WindowWatch.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QTest>

using platform::Array;
using platform::Dictionary;
using Messages = std::vector<std::int64_t>;

namespace {

const char* const startButton = "startButton";
const char* const notNowButton = "notNowButton";

Dictionary choiceOf(const char* program, const Dictionary& fields)
{
    return {{"Program", program}, {"Fields", fields}, {"PreventSleep", false}};
}

Dictionary foldersAndRepository(const char* folder, const char* repository)
{
    return {{"Folders", Array{folder}}, {"Repository", repository}};
}

platform::Error refusal(const char* key, const char* expected, const char* path)
{
    return {BRVErrorDomain, BRVErrorWrongType, {{"key", key}, {"expected", expected}, {"path", path}}, nullptr};
}

// The application that was led here by the page, and left it without an answer.
void checkNothingWasWritten(FirstStartTest& test)
{
    CHECK(test.scheduler.messages() == Messages{1, 7});
    CHECK_FALSE(test.page.seesWindow());
    CHECK(test.main.seesWindow());
    CHECK_FALSE(user::currentAlert());
    CHECK_FALSE(user::didTerminate());
    CHECK(scripted::authorization::calls(scripted::authorization::Operation::Create).empty());
}

std::string focused()
{
    const auto* const widget = QApplication::focusWidget();
    return widget ? widget->objectName().toStdString() : "nothing";
}

} // namespace

TEST_CASE("where nothing was ever set up the page comes, and the main window not before it was left")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    CHECK(test.scheduler.messages() == Messages{1, 7});
    CHECK(test.page.seesWindow());
    CHECK_FALSE(test.main.seesWindow());
    CHECK(distanceFromCenter(windowNamed("firstStartWindow")) <= 2);
}

TEST_CASE("every question has an answer already")
{
    FirstStartTest test(offerOfPrograms({"borg", "restic"}));
    test.launch();
    CHECK(test.page.text("folderField") == "/home/anna");
    CHECK(test.page.itemTitles("firstProgramPopUp") == std::vector<std::string>{"Borg", "restic"});
    CHECK(test.page.selectedIndex("firstProgramPopUp") == 0);
    CHECK(test.page.text("firstDestinationField") == "/var/backups/brevane");
    CHECK(test.page.selectedIndex("whenPopUp") == 0);
    CHECK_FALSE(test.page.sees("timePicker"));
    CHECK_FALSE(test.page.sees("firstSecretFileField"));
    CHECK_FALSE(test.page.sees("faultLabel"));
    CHECK(test.page.isEnabled(startButton));
}

TEST_CASE("a disk that is plugged in is where the backups go")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    scripted::volumes::add({.path = "/"});
    scripted::volumes::add({.path = "/media/anna/Cloud", .flags = 0});
    scripted::volumes::add({.path = "/media/anna/Disk"});
    test.launch();
    CHECK(test.page.text("firstDestinationField") == "/media/anna/Disk/Brevane");
}

TEST_CASE("a schedule that was applied brings the main window without another message")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.scheduler.setRecord(completeRecord());
    test.launch();
    CHECK(test.scheduler.messages() == Messages{1});
    CHECK(test.main.seesWindow());
    CHECK_FALSE(test.page.seesWindow());
}

TEST_CASE("a chosen program, an applied schedule, another helper and one that does not answer bring the main window")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    SUBCASE("a program is chosen")
    {
        test.scheduler.setBackupProgram(freshOffer(offerOfPrograms({"borg"}, {{"Program", "borg"}})));
    }
    SUBCASE("a schedule like the first one was applied")
    {
        test.scheduler.setBackupProgram(offerOfPrograms({"borg"}));
    }
    SUBCASE("the helper does not know the message")
    {
        test.scheduler.refuseMessage(7, {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {}, nullptr});
    }
    SUBCASE("its reply is no dictionary")
    {
        test.scheduler.answerMessage(7, replyWith("something"));
    }
    test.launch();
    CHECK(test.scheduler.messages() == Messages{1, 7});
    CHECK(test.main.seesWindow());
    CHECK_FALSE(test.page.seesWindow());
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("the last button chooses the program, applies the schedule and leads to the main window")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7, 12, 2});
    CHECK(test.scheduler.payloads(12).back()
          == choiceOf("borg", foldersAndRepository("/home/anna", "/var/backups/brevane")));
    auto expected = defaultScheduleSettings();
    expected.set("Backups", true);
    CHECK(test.scheduler.received().back() == expected);
    CHECK_FALSE(test.page.seesWindow());
    CHECK(test.main.seesWindow());
    CHECK(test.main.isOn("backupsCheckBox"));
    REQUIRE(user::currentAlert());
    CHECK(test.main.alert().messageText == "Settings applied successfully.");
    test.main.dismissAlert();
    FirstStartTest::settle();
    CHECK_FALSE(user::currentAlert()); // a program is chosen
    test.main.click("applyButton");
    CHECK(test.main.alert().messageText == "Settings already applied.");
    CHECK(scripted::defaults::all().find("DidDismissFirstStart") == nullptr);
}

TEST_CASE("what is asked for is one authorization")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.click(startButton);
    CHECK(scripted::authorization::calls(scripted::authorization::Operation::Create).size() == 1);
}

TEST_CASE("the answers that are given are those that are sent")
{
    FirstStartTest test(offerOfPrograms({"borg", "restic"}));
    test.launch();
    test.choose("firstProgramPopUp", 1);
    CHECK(test.page.sees("firstSecretFileField"));
    test.type("folderField", "/srv/photos");
    test.type("firstDestinationField", "/mnt/backups");
    test.type("firstSecretFileField", "/root/secret");
    test.choose("whenPopUp", 1);
    test.page.setTime("timePicker", {21, 30});
    test.click(startButton);
    auto fields = foldersAndRepository("/srv/photos", "/mnt/backups");
    fields.set("PasswordFile", "/root/secret");
    CHECK(test.scheduler.payloads(12).back() == choiceOf("restic", fields));
    const Dictionary calendar{{"Intervals", Array{Dictionary{{"Hour", 21}, {"Minute", 30}}}}, {"ASAP", true}};
    REQUIRE(test.scheduler.received().size() == 1);
    CHECK(*test.scheduler.received().back().stringForKey("BackupsMode") == "CalendarIntervals");
    CHECK(*test.scheduler.received().back().dictionaryForKey("CalendarIntervals") == calendar);
    CHECK(test.main.selectedIndex("operationModePopUp") == 2);
}

TEST_CASE("a folder can be looked for instead of typed, and looking without choosing changes nothing")
{
    const TemporaryDirectory folder;
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.click("folderButton");
    cancelOpenPanel();
    FirstStartTest::settle();
    CHECK(test.page.text("folderField") == "/home/anna");
    test.click("folderButton");
    answerOpenPanel(folder.path());
    FirstStartTest::settle();
    CHECK(test.page.text("folderField") == folder.path());
    test.click("firstDestinationButton");
    answerOpenPanel(folder.path());
    FirstStartTest::settle();
    CHECK(test.page.text("firstDestinationField") == folder.path());
}

TEST_CASE("the time is asked for where backups are made every day, and the note goes with it")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    CHECK(test.page.text("whenNoteLabel").starts_with("Backups are made whenever the computer is inactive"));
    test.choose("whenPopUp", 1);
    CHECK(test.page.sees("timePicker"));
    CHECK(test.page.time("timePicker") == platform::TimeOfDay{12, 0});
    CHECK(test.page.text("whenNoteLabel")
          == "If the computer is off at that time, the backup is made as soon as possible.");
    test.choose("whenPopUp", 0);
    CHECK_FALSE(test.page.sees("timePicker"));
}

TEST_CASE("Escape leaves everything as it was, wherever the keyboard is, and the page does not come again")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.choose("whenPopUp", 1);
    test.type("folderField", "/srv/photos");
    const char* control = "folderField";
    SUBCASE("in a field") { }
    SUBCASE("on a pop-up")
    {
        control = "whenPopUp";
    }
    SUBCASE("in the time")
    {
        control = "timePicker";
    }
    SUBCASE("on a button")
    {
        control = "folderButton";
    }
    SUBCASE("on the last button")
    {
        control = startButton;
    }
    CAPTURE(control);
    test.page.press(control, Key::Escape);
    FirstStartTest::settle();
    checkNothingWasWritten(test);
    CHECK_FALSE(test.main.isOn("backupsCheckBox"));
    CHECK(scripted::defaults::all() == Dictionary{{"DidDismissFirstStart", true}});

    test.launchAgain();
    CHECK(test.scheduler.messages() == Messages{1, 7, 1});
    CHECK(test.main.seesWindow());
    CHECK_FALSE(test.page.seesWindow());
}

TEST_CASE("the button Not Now, the window's own and its key do what Escape does")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    SUBCASE("button")
    {
        test.click(notNowButton);
    }
    SUBCASE("frame")
    {
        test.page.closeWindow();
    }
    SUBCASE("key")
    {
        test.page.pressKeys("Ctrl+W");
    }
    FirstStartTest::settle();
    checkNothingWasWritten(test);
    CHECK(scripted::defaults::all() == Dictionary{{"DidDismissFirstStart", true}});
}

TEST_CASE("an application that ended while the page was open shows it again")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.launchAgain();
    CHECK(test.page.seesWindow());
    CHECK(scripted::defaults::all().empty());
}

TEST_CASE("Return presses the last button, and Tab visits the questions in their order")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    CHECK(focused() == "folderField");
    for (const auto* const next :
         {"folderButton", "firstProgramPopUp", "firstDestinationField", "firstDestinationButton", "whenPopUp",
          "allSettingsButton", notNowButton, startButton}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        CHECK(focused() == next);
    }
    test.page.press("folderField", Key::Return);
    FirstStartTest::settle();
    CHECK(test.scheduler.messages() == Messages{1, 7, 12, 2});
}

TEST_CASE("a refused choice is told in plain words, what was entered stays, and nothing else is sent")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.scheduler.refuseMessage(12, refusal("Repository", BackupFieldExpectation::OfAdministrator, "/home/anna"));
    test.type("firstDestinationField", "/home/anna/backups");
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7, 12});
    CHECK(test.page.seesWindow());
    CHECK(test.page.text("faultLabel")
          == "Others than the administrator can change \"/home/anna\", so no backups go there. Choose a folder on "
             "another disk, or one that only the administrator can change.");
    CHECK(test.page.text("firstDestinationField") == "/home/anna/backups");
    CHECK(test.page.isEnabled(startButton));
    test.type("firstDestinationField", "/mnt/backups");
    CHECK_FALSE(test.page.sees("faultLabel"));
}

TEST_CASE("an empty answer is sent as none, and the page says what is missing")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.scheduler.refuseMessage(12, {BRVErrorDomain, BRVErrorMissingValue, {{"key", "Repository"}}, nullptr});
    test.page.press("firstDestinationField", Key::End);
    test.type("firstDestinationField", " ");
    test.page.press("firstDestinationField", Key::Backspace);
    FirstStartTest::settle();
    test.click(startButton);
    CHECK(*test.scheduler.payloads(12).back().dictionaryForKey("Fields")
          == Dictionary{{"Folders", Array{"/home/anna"}}});
    CHECK(test.page.text("faultLabel") == "Enter the folder that the backups go to.");
}

TEST_CASE("whoever dismisses the authentication is back on the page without a word")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    scripted::authorization::answerCopyRight(BRVRightModifySettings1, {-60006});
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7});
    CHECK(test.page.seesWindow());
    CHECK_FALSE(test.page.sees("faultLabel"));
    CHECK_FALSE(user::currentAlert());
    CHECK(test.page.isEnabled(startButton));
}

TEST_CASE("a schedule that is refused after the program was chosen is told, and can be applied again")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.scheduler.refuseWith(
        platform::Error{"NSPOSIXErrorDomain", 28, {{platform::LocalizedDescriptionKey, "The disk is full."}}, nullptr});
    test.choose("whenPopUp", 1);
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7, 12, 2});
    CHECK(test.page.text("faultLabel")
              .starts_with("The backup program is chosen, but the schedule is not applied yet. "));
    CHECK(test.page.text("faultLabel").ends_with("The disk is full."));
    CHECK(test.page.selectedIndex("whenPopUp") == 1);
    test.scheduler.refuseWith(std::nullopt);
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7, 12, 2, 12, 2});
    CHECK(test.main.seesWindow());
}

TEST_CASE(
    "a page that is closed while its answers are sent is told of in the main window, or comes again with what is wrong")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    scripted::service::hold();
    test.click(startButton);
    for (const auto* const button : {startButton, notNowButton, "allSettingsButton"})
        CHECK_FALSE(test.page.isEnabled(button));
    test.page.closeWindow();
    FirstStartTest::settle();
    CHECK(test.main.seesWindow());
    CHECK_FALSE(test.main.isOn("backupsCheckBox"));
    SUBCASE("applied")
    {
        scripted::service::release();
        REQUIRE(user::runEventsUntil([] { return user::currentAlert().has_value(); }, 5000));
        CHECK(test.main.alert().messageText == "Settings applied successfully.");
        CHECK(test.main.isOn("backupsCheckBox"));
        CHECK_FALSE(test.page.seesWindow());
    }
    SUBCASE("refused")
    {
        test.scheduler.refuseMessage(2, {BRVErrorDomain, BRVErrorMissingValue, {{"key", "Suspend"}}, nullptr});
        scripted::service::release();
        REQUIRE(user::runEventsUntil([&] { return test.page.seesWindow(); }, 5000));
        CHECK(test.page.text("faultLabel").starts_with("The backup program is chosen, but"));
    }
}

TEST_CASE("without a program the page says how one is installed, and goes on once it is")
{
    FirstStartTest test(offerOfPrograms({"service", "rsnapshot"}));
    test.launch();
    CHECK(test.page.text("stateLabel")
          == "No backup program is ready. Borg is a good choice; this command installs it:");
    CHECK(test.page.text("firstInstallCommandLabel") == "sudo apt install borgbackup");
    CHECK_FALSE(test.page.sees("firstProgramPopUp"));
    CHECK_FALSE(test.page.sees("folderField"));
    CHECK_FALSE(test.page.isEnabled(startButton));
    test.choose("whenPopUp", 1);

    test.scheduler.setBackupProgram(freshOffer(offerOfPrograms({"borg"})));
    test.click("firstLookAgainButton");
    CHECK_FALSE(test.page.sees("firstLookAgainButton"));
    CHECK_FALSE(test.page.sees("stateLabel"));
    CHECK(test.page.sees("folderField"));
    CHECK(test.page.selectedIndex("whenPopUp") == 1);
    test.click(startButton);
    CHECK(*test.scheduler.payloads(12).back().stringForKey("Program") == "borg");
}

TEST_CASE("a helper that does not answer while the page looks again is told")
{
    FirstStartTest test(offerOfPrograms({}));
    test.launch();
    test.scheduler.refuseMessage(7, {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {}, nullptr});
    test.click("firstLookAgainButton");
    CHECK(test.page.text("faultLabel")
          == "The background scheduler is of another version, which starts no backup programs.");
}

TEST_CASE("a program with settings of its own is chosen without folders")
{
    FirstStartTest test(offerOfPrograms({"timeshift"}));
    test.launch();
    CHECK(test.page.itemTitles("firstProgramPopUp") == std::vector<std::string>{"Timeshift"});
    CHECK_FALSE(test.page.sees("folderField"));
    CHECK_FALSE(test.page.sees("firstDestinationField"));
    CHECK(test.page.text("stateLabel") == "What is backed up and where to is set in Timeshift itself.");
    test.click(startButton);
    CHECK(test.scheduler.payloads(12).back() == Dictionary{{"Program", "timeshift"}, {"PreventSleep", false}});
}

TEST_CASE("where the system has its own backup program only the time is asked, and the schedule is sent")
{
    FirstStartTest test(offerOfPrograms({}));
    scripted::facility::setHasBackupProgram(true);
    test.launch();
    CHECK(test.page.text("stateLabel").starts_with("The system backs up with its own program."));
    for (const auto* const control :
         {"folderField", "firstProgramPopUp", "firstDestinationField", "firstLookAgainButton"})
        CHECK_FALSE(test.page.sees(control));
    test.scheduler.refuseWith(
        platform::Error{"NSPOSIXErrorDomain", 28, {{platform::LocalizedDescriptionKey, "The disk is full."}}, nullptr});
    test.click(startButton);
    CHECK(test.page.text("faultLabel").starts_with("Failed to apply settings. "));
    test.scheduler.refuseWith(std::nullopt);
    test.click(startButton);
    CHECK(test.scheduler.messages() == Messages{1, 7, 2, 2});
    CHECK(test.main.seesWindow());
}

TEST_CASE("the button All Settings takes the answers into the ordinary windows, where they are not applied yet")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    test.choose("whenPopUp", 1);
    test.type("firstDestinationField", "/mnt/backups");
    test.click("allSettingsButton");
    checkNothingWasWritten(test);
    CHECK(test.main.isOn("backupsCheckBox"));
    CHECK(test.main.selectedIndex("operationModePopUp") == 2);

    test.main.clickMenuItem("backupProgramMenuItem");
    FirstStartTest::settle();
    const WindowUser window("backupProgramWindow");
    CHECK(window.text("destinationField") == "/mnt/backups");
    CHECK(window.isEnabled("chooseProgramButton"));
    CHECK(test.scheduler.messages() == Messages{1, 7, 7});
    // The schedule in force is still the one that was fetched.
    test.main.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK_FALSE(test.main.isOn("backupsCheckBox"));
}

TEST_CASE("while the page is open a second start brings it forward, and no other window")
{
    FirstStartTest test(offerOfPrograms({"borg"}));
    test.launch();
    windowNamed("firstStartWindow").showMinimized();
    CHECK(test.controller->applicationDidReopen(false));
    test.controller->applicationShouldShow("activity");
    FirstStartTest::settle();
    CHECK_FALSE(windowNamed("firstStartWindow").isMinimized());
    CHECK(test.page.seesWindow());
    CHECK_FALSE(test.main.seesWindow());
}
