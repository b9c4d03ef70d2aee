#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedBackgroundItem.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedWorkspace.h"
#include "tests/shell/support/EditorTest.h"

#include <doctest/doctest.h>
#include <string>
#include <vector>

using platform::ui::AlertStyle;
using Texts = std::vector<std::string>;

namespace {

const char* const plistPath = "/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist";
const char* const toolPath = "/Library/Brevane/com.zerkolin.brevane.scheduler";
const char* const panePath = "/System/Library/PreferencePanes/TimeMachine.prefPane";
const char* const webSite = "https://brevane.zerkolin.example/brevane/";
const char* const mail = "mailto:support@zerkolin.example?subject=Brevane";
const char* const timeMachine = "com.apple.TimeMachine";

const char* const disabledByUser = "The background scheduler has been disabled.\n\n"
                                   "1. Click the \"Open System Settings\" button below\n"
                                   "2. Locate the table titled \"Allow in the Background\" (it's the second table)\n"
                                   "3. Enable the item named either \"Brevane\" or \"Joren VALKE\"\n\n"
                                   "If this doesn't solve the issue, try reinstalling the latest version available "
                                   "from the web site.";
const char* const appearsDisabled = "The background scheduler appears to be disabled. This is usually fixed by "
                                    "reinstalling the latest version available from the web site.";
const char* const notInstalled = "The background scheduler is not installed. This is fixed by reinstalling the latest "
                                 "version available from the web site.";

platform::Error messagerError(std::int64_t code)
{
    return {ZRKMessagerErrorDomain, code, {{"message", 2}, {"service", "com.zerkolin.brevane.scheduler"}}, nullptr};
}

// One way in which the scheduler helper can be out of reach.
struct Situation {
    const char* name;
    platform::OperatingSystemVersion system;
    bool plist, tool;
    std::optional<platform::BackgroundItemStatus> status;
    const char* text;
    Texts buttons;
};

const std::vector<Situation>& situations()
{
    using enum platform::BackgroundItemStatus;
    const Texts approval{"Open System Settings", "Go to Web Site"};
    const Texts disabled{"Go to Web Site", "Ask for Support", "OK"};
    const Texts missing{"Go to Web Site", "OK"};
    static const std::vector<Situation> all{
        {"awaiting approval", {13, 0, 0}, true, true, RequiresApproval, disabledByUser, approval},
        {"awaiting approval later", {14, 2, 1}, true, true, RequiresApproval, disabledByUser, approval},
        {"the same on macOS 12", {12, 6, 9}, true, true, RequiresApproval, appearsDisabled, disabled},
        {"enabled", {13, 0, 0}, true, true, Enabled, appearsDisabled, disabled},
        {"not registered", {13, 0, 0}, true, true, NotRegistered, appearsDisabled, disabled},
        {"no such service class", {13, 0, 0}, true, true, std::nullopt, appearsDisabled, disabled},
        {"no plist", {13, 0, 0}, false, true, RequiresApproval, notInstalled, missing},
        {"no tool", {13, 0, 0}, true, false, RequiresApproval, notInstalled, missing},
        {"neither", {10, 9, 5}, false, false, std::nullopt, notInstalled, missing},
    };
    return all;
}

void arrange(const Situation& situation)
{
    scripted::system::setOperatingSystemVersion(situation.system);
    if (!situation.plist)
        scripted::system::removeFile(plistPath);
    if (!situation.tool)
        scripted::system::removeFile(toolPath);
    scripted::background::setStatus(situation.status);
}

// What a button opens.
Texts effectOf(const std::string& button)
{
    if (button == "Go to Web Site")
        return {webSite};
    if (button == "Ask for Support")
        return {mail};
    return {};
}

void checkButtonDoesWhatItSays(const std::string& button)
{
    CHECK(scripted::workspace::openedURLs() == effectOf(button));
    CHECK(scripted::background::settingsOpened() == (button == "Open System Settings" ? 1u : 0u));
    CHECK(scripted::workspace::openedFiles().empty());
    CHECK_FALSE(user::currentAlert());
}

} // namespace

TEST_CASE("an unreachable scheduler helper is diagnosed, and every button does what it says")
{
    for (const Situation& situation : situations()) {
        for (std::size_t button = 0; button < situation.buttons.size(); ++button) {
            CAPTURE(situation.name);
            CAPTURE(situation.buttons[button]);
            EditorTest editor(completeRecord());
            arrange(situation);
            editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), true);
            const auto alert = editor.user.alert();
            CHECK(alert.messageText == "Title");
            CHECK(alert.informativeText == situation.text);
            CHECK(alert.buttons == situation.buttons);
            CHECK(alert.isSheet);
            CHECK(alert.style == AlertStyle::Critical);
            user::answer(static_cast<int>(button));
            checkButtonDoesWhatItSays(situation.buttons[button]);
        }
    }
}

TEST_CASE("the same diagnosis stands alone when it is not a sheet")
{
    for (const Situation& situation : situations()) {
        for (std::size_t button = 0; button < situation.buttons.size(); ++button) {
            CAPTURE(situation.name);
            EditorTest editor(completeRecord());
            arrange(situation);
            user::answerNextAlert(static_cast<int>(button));
            editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), false);
            const auto alerts = user::takeAnsweredAlerts();
            REQUIRE(alerts.size() == 1);
            CHECK(alerts[0].informativeText == situation.text);
            CHECK(alerts[0].buttons == situation.buttons);
            CHECK_FALSE(alerts[0].isSheet);
            CHECK(alerts[0].style == AlertStyle::Critical);
            checkButtonDoesWhatItSays(situation.buttons[button]);
        }
    }
}

TEST_CASE("the approval is asked for the launch daemon's file where this edition has it, from macOS 13 on")
{
    EditorTest editor(completeRecord());
    scripted::system::setRoot("/sandbox");
    scripted::system::addFile(std::string("/sandbox") + plistPath);
    scripted::system::addFile(std::string("/sandbox") + toolPath);
    scripted::background::setStatus(platform::BackgroundItemStatus::RequiresApproval);
    editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), true);
    CHECK(editor.user.alert().informativeText == disabledByUser);
    CHECK(scripted::background::askedPaths() == Texts{std::string("/sandbox") + plistPath});
    editor.user.dismissAlert();

    scripted::background::reset();
    scripted::system::setOperatingSystemVersion({12, 0, 0});
    editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), true);
    CHECK(scripted::background::askedPaths().empty());
}

TEST_CASE("any other error is described, with the advice that is not for translation")
{
    const auto underlying = std::make_shared<const platform::Error>(
        platform::Error{ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorCreate, {{"status", -60008}}, nullptr});
    platform::Error chain = messagerError(ZRKMessagerErrorAuthorize);
    chain.underlying = underlying;
    struct Case {
        platform::Error error;
        const char* description;
    };
    const std::vector<Case> cases{
        {messagerError(ZRKMessagerErrorServiceDisappeared),
         "Could not send message (2), the service disappeared (crash?) (com.zerkolin.brevane.scheduler)."},
        {chain, "Could not authorize message (2). Could not create authorization: -60008."},
        {{BRVErrorDomain, BRVErrorUnknownKey, {{"key", "Oops"}}, nullptr}, "Unknown key: 'Oops'."},
        // Code 7 of another domain is nothing special.
        {{ZRKUpdaterErrorDomain, ZRKUpdaterErrorInstall, {}, nullptr}, "Could not install update."},
        {{"com.example.unknown", 7, {{platform::LocalizedDescriptionKey, "100% odd: %@ %d"}}, nullptr},
         "100% odd: %@ %d"},
    };
    const Texts buttons{"Go to Web Site", "Ask for Support", "OK"};
    for (const Case& each : cases) {
        for (std::size_t button = 0; button < buttons.size(); ++button) {
            EditorTest editor(completeRecord());
            scripted::system::removeFile(plistPath); // of no interest here
            editor.controller->displayAlertWithTitle("Title", each.error, true);
            const auto alert = editor.user.alert();
            CHECK(alert.informativeText
                  == std::string(each.description)
                      + "\n\nYou should try installing the latest version available from the web site.");
            CHECK(alert.buttons == buttons);
            CHECK(alert.style == AlertStyle::Critical);
            user::answer(static_cast<int>(button));
            checkButtonDoesWhatItSays(buttons[button]);
        }
    }
}

TEST_CASE("each answer does its button's work alone, whatever else it could mean")
{
    struct Case {
        int response;
        bool mailSupport, systemSettings;
        Texts urls;
        std::size_t settings;
    };
    for (const Case& each : std::vector<Case>{{1000, true, false, {webSite}, 0},
                                              {1001, true, false, {mail}, 0},
                                              {1002, true, false, {}, 0},
                                              {1000, false, false, {webSite}, 0},
                                              {1001, false, false, {}, 0},
                                              {1002, false, false, {}, 0},
                                              {1000, false, true, {}, 1},
                                              {1001, false, true, {webSite}, 0},
                                              {1002, false, true, {}, 0},
                                              {1001, true, true, {webSite}, 0},
                                              {999, true, false, {}, 0},
                                              {-1, false, true, {}, 0},
                                              {platform::ui::Alert::Stop, false, true, {}, 0},
                                              {platform::ui::Alert::Abort, false, true, {}, 0},
                                              {platform::ui::Alert::Stop, true, false, {}, 0}}) {
        CAPTURE(each.response);
        EditorTest editor(completeRecord());
        editor.controller->finishDisplayAlertWithResponse(each.response, each.mailSupport, each.systemSettings);
        CHECK(scripted::workspace::openedURLs() == each.urls);
        CHECK(scripted::background::settingsOpened() == each.settings);
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("closing the alert of a disabled scheduler, by key or by its frame, presses none of its buttons")
{
    for (const auto close : {user::cancelAlert, +[] { user::answer(user::CloseButton); }}) {
        for (const Situation& situation : situations()) {
            CAPTURE(situation.name);
            EditorTest editor(completeRecord());
            arrange(situation);
            editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), true);
            close();
            checkButtonDoesWhatItSays("none");
        }
    }
}

TEST_CASE("a notice is plain as long as the system's own backups are off or unknown, which a number is too")
{
    for (const std::optional<platform::PropertyList>& value :
         {std::optional<platform::PropertyList>(), std::optional<platform::PropertyList>(false),
          std::optional<platform::PropertyList>("YES"), std::optional<platform::PropertyList>(platform::Array{true}),
          std::optional<platform::PropertyList>(1), std::optional<platform::PropertyList>(1.0)}) {
        EditorTest editor(completeRecord());
        scripted::preferences::set("AutoBackup", timeMachine, value);
        editor.controller->displaySystemSchedulerCheckAlert("Title", "Message.");
        const auto alert = editor.user.alert();
        CHECK(alert.messageText == "Title");
        CHECK(alert.informativeText == "Message.");
        CHECK(alert.buttons == Texts{"OK"});
        CHECK(alert.isSheet);
        CHECK(alert.style == AlertStyle::Warning);
        editor.user.answer("OK");
        CHECK(scripted::workspace::openedFiles().empty());
    }
}

TEST_CASE("a notice warns of the system's own backups and offers their settings")
{
    for (const char* button : {"Open System Preferences", "OK"}) {
        EditorTest editor(completeRecord());
        scripted::preferences::set("AutoBackup", timeMachine, true);
        editor.user.click("suspendCheckBox");
        REQUIRE(editor.apply());
        const auto alert = editor.user.alert();
        CHECK(alert.messageText == "Settings applied successfully.");
        CHECK(alert.informativeText
              == "Brevane will now enforce the new scheduling. Please make sure to disable automatic backups in System "
                 "Preferences in order to turn off the system scheduler.");
        CHECK(alert.buttons == Texts{"Open System Preferences", "OK"});
        CHECK(alert.isSheet);
        CHECK(alert.style == AlertStyle::Warning);
        editor.user.answer(button);
        const bool opens = std::string(button) != "OK";
        CHECK(scripted::workspace::openedFiles() == (opens ? Texts{panePath} : Texts{}));
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("the notice that there is nothing to apply warns as well")
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", timeMachine, true);
    CHECK_FALSE(editor.apply());
    CHECK(editor.user.alert().messageText == "Settings already applied.");
    CHECK(editor.user.alert().buttons == Texts{"Open System Preferences", "OK"});
}

TEST_CASE("the news that nothing is scheduled anymore never warns")
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", timeMachine, true);
    editor.user.click("snapshotsCheckBox");
    editor.user.click("backupsCheckBox");
    REQUIRE(editor.apply());
    CHECK(editor.user.alert().informativeText == "Brevane will not schedule backups anymore.");
    CHECK(editor.user.alert().buttons == Texts{"OK"});
    CHECK(editor.user.alert().style == AlertStyle::Warning);
}

TEST_CASE("texts with format characters are shown as they are")
{
    EditorTest editor(completeRecord());
    scripted::preferences::set("AutoBackup", timeMachine, true);
    editor.controller->displaySystemSchedulerCheckAlert("50% %@", "100% %d %@ \xE2\x80\x9Csure\xE2\x80\x9D.");
    CHECK(editor.user.alert().messageText == "50% %@");
    CHECK(editor.user.alert().informativeText.starts_with("100% %d %@ \xE2\x80\x9Csure\xE2\x80\x9D. Please"));
}

TEST_CASE("ticking the battery box reminds of the system's own setting unless it is known to be fine")
{
    struct Case {
        std::optional<platform::PropertyList> requiresPower;
        bool reminds;
    };
    for (const Case& each : {Case{std::nullopt, true}, Case{true, true}, Case{1, true}, Case{"no", true}, Case{0, true},
                             Case{false, false}}) {
        EditorTest editor(completeRecordWith("AllowBattery", false));
        scripted::preferences::set("RequiresACPower", timeMachine, each.requiresPower);
        editor.user.click("allowBatteryCheckBox");
        CHECK(user::currentAlert().has_value() == each.reminds);
    }
}

TEST_CASE("the battery reminder offers the system's settings")
{
    for (const char* button : {"Open System Preferences", "OK"}) {
        EditorTest editor(completeRecordWith("AllowBattery", false));
        editor.user.click("allowBatteryCheckBox");
        const auto alert = editor.user.alert();
        CHECK(alert.messageText == "Important Note.");
        CHECK(alert.informativeText
              == "Please make sure to enable backups while on battery power in System Preferences > Time Machine > "
                 "Options.");
        CHECK(alert.buttons == Texts{"Open System Preferences", "OK"});
        CHECK(alert.isSheet);
        CHECK(alert.style == AlertStyle::Warning);
        editor.user.answer(button);
        const bool opens = std::string(button) != "OK";
        CHECK(scripted::workspace::openedFiles() == (opens ? Texts{panePath} : Texts{}));
        CHECK(editor.user.isOn("allowBatteryCheckBox"));
    }
}

TEST_CASE("unticking the battery box reminds of nothing")
{
    EditorTest editor(completeRecord());
    editor.user.click("allowBatteryCheckBox");
    CHECK_FALSE(editor.user.isOn("allowBatteryCheckBox"));
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a battery box in the mixed state is not off, and reminds")
{
    EditorTest editor(completeRecord());
    const auto box = platform::ui::CheckBox::create("");
    box->setState(platform::ui::CheckState::Mixed);
    editor.controller->changeAllowBatteryPower(*box);
    CHECK(editor.user.alert().messageText == "Important Note.");
    editor.user.dismissAlert();
    box->setState(platform::ui::CheckState::Off);
    editor.controller->changeAllowBatteryPower(*box);
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("the battery reminder begins with macOS 10.15")
{
    const auto reminds = [](const platform::OperatingSystemVersion& version) {
        EditorTest editor(completeRecordWith("AllowBattery", false), {.system = version});
        editor.user.click("allowBatteryCheckBox");
        CHECK(editor.user.isOn("allowBatteryCheckBox"));
        return user::currentAlert().has_value();
    };
    CHECK_FALSE(reminds({10, 9, 5}));
    CHECK_FALSE(reminds({10, 14, 6}));
    CHECK(reminds({10, 15, 0}));
    CHECK(reminds({13, 0, 0}));
}

TEST_CASE("the fixed path of the settings pane stands below the edition's root")
{
    EditorTest editor(completeRecordWith("AllowBattery", false));
    scripted::system::setRoot("/sandbox");
    editor.user.click("allowBatteryCheckBox");
    editor.user.answer("Open System Preferences");
    CHECK(scripted::workspace::openedFiles() == Texts{std::string("/sandbox") + panePath});
}

TEST_CASE("a desktop without the settings pane says so in a sheet")
{
    EditorTest editor(completeRecordWith("AllowBattery", false));
    scripted::workspace::setOpens(false);
    editor.user.click("allowBatteryCheckBox");
    editor.user.answer("Open System Preferences");
    const auto alert = editor.user.alert();
    CHECK(alert.messageText == "The settings could not be opened.");
    CHECK(alert.informativeText == "Open the settings of your desktop yourself, and look for backups or power there.");
    CHECK(alert.buttons == Texts{"OK"});
    CHECK(alert.isSheet);
    CHECK(alert.style == AlertStyle::Informational);
    editor.user.answer("OK");
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a desktop where background items cannot be approved says so")
{
    EditorTest editor(completeRecord());
    scripted::background::setSettingsOpen(false);
    editor.controller->finishDisplayAlertWithResponse(1000, false, true);
    CHECK(editor.user.alert().informativeText
          == "To switch on the background scheduler, run this command in a terminal as an administrator:\n\n"
             "systemctl enable --now com.zerkolin.brevane.scheduler");
    CHECK(scripted::background::settingsOpened() == 1);
}

TEST_CASE("a web site or mail program that does not open is ignored")
{
    EditorTest editor(completeRecord());
    scripted::workspace::setOpens(false);
    editor.controller->openWebSite();
    editor.controller->contactByMail();
    CHECK(scripted::workspace::openedURLs() == Texts{webSite, mail});
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a failed uninstallation is told in an alert of its own")
{
    EditorTest editor(completeRecord());
    user::answerNextAlert(0);
    editor.controller->didFailToUninstallWithError({BRVErrorDomain, BRVErrorPeersConnected, {}, nullptr});
    const auto alerts = user::takeAnsweredAlerts();
    REQUIRE(alerts.size() == 1);
    CHECK(alerts[0].messageText == "Could not uninstall.");
    CHECK(alerts[0].informativeText == "Peers are connected.");
    CHECK(alerts[0].buttons == Texts{"OK"});
    CHECK_FALSE(alerts[0].isSheet);
    CHECK(alerts[0].style == AlertStyle::Critical);
    CHECK(scripted::workspace::openedURLs().empty());
}

TEST_CASE("a sheet whose editor is gone does nothing when it is answered")
{
    {
        EditorTest editor(completeRecord());
        scripted::background::setStatus(platform::BackgroundItemStatus::RequiresApproval);
        editor.controller->displayAlertWithTitle("Title", messagerError(ZRKMessagerErrorServiceUnavailable), true);
        editor.controller.reset();
    }
    CHECK_FALSE(user::currentAlert());
    CHECK(scripted::workspace::openedURLs().empty());
}
