#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/NotificationCenter.h"
#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/WindowWatch.h"
#include "update/BRVPreferencesController.h"

#include <doctest/doctest.h>
#include <QWidget>
#include <string>
#include <vector>

namespace authorization = scripted::authorization;
using authorization::Operation;
using platform::Array;
using platform::Authorization;
using platform::Dictionary;

namespace {

const char* const autoUpdates = "autoUpdatesCheckBox";
const char* const requirePassword = "requirePasswordCheckBox";

platform::Error refusal()
{
    return {BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr};
}

// The preferences window beside a scheduler helper, with this rule in the rights database.
class PreferencesTest {
public:
    explicit PreferencesTest(const std::optional<Dictionary>& right = Dictionary{{"rule", Array{"authenticate-admin"}}})
        : scheduler((setUp({}), ScheduleSettings()))
    {
        authorization::reset(); // what was held before is gone, which is of no interest
        if (right)
            authorization::setDefinition(BRVRightModifySettings1, *right);
    }

    void show()
    {
        controller->showWindow();
        user::runEvents();
    }

    PlayedScheduler scheduler;
    WindowUser user{"preferencesWindow"};
    std::shared_ptr<BRVPreferencesController> controller = BRVPreferencesController::create();
};

} // namespace

TEST_CASE("nothing is asked before the window is shown, and then each setting is read once")
{
    PreferencesTest test;
    CHECK(test.scheduler.messages().empty());
    CHECK_FALSE(test.user.seesWindow());
    test.show();
    CHECK(test.user.seesWindow());
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{18});
    test.show();
    CHECK(test.scheduler.messages() == std::vector<std::int64_t>{18});
    CHECK(authorization::calls(Operation::CopyRight).empty());
}

TEST_CASE("the window is that of the interface file with the controller's name")
{
    PreferencesTest test;
    CHECK(test.controller->windowNibName() == "BRVPreferencesController");
    test.show();
    CHECK(user::windows() == std::vector<std::string>{"preferencesWindow"});
    CHECK(user::activeWindow() == "preferencesWindow");
}

TEST_CASE("the preferences window is shown when it is filled")
{
    PreferencesTest test;
    int shown = 0;
    const WindowWatch watch("preferencesWindow", [&](QWidget&) {
        ++shown;
        CHECK(test.scheduler.messages() == std::vector<std::int64_t>{18});
        CHECK(test.user.isOn(autoUpdates));
        CHECK(test.user.isOn(requirePassword));
    });
    test.show();
    CHECK(shown == 1);
}

TEST_CASE("the preferences window is put in the middle of the screen")
{
    PreferencesTest test;
    test.show();
    QWidget& window = windowNamed("preferencesWindow");
    CHECK(distanceFromCenter(window) < 20); // with the size that its text takes
    window.move(1, 2);
    test.controller->windowDidLoad();
    user::runEvents();
    CHECK(distanceFromCenter(window) < 20);
}

TEST_CASE("a window that was closed comes back as it was, and asks nothing again")
{
    PreferencesTest test;
    test.show();
    test.user.closeWindow();
    CHECK_FALSE(test.user.seesWindow());
    test.show();
    CHECK(test.user.seesWindow());
    CHECK(test.user.isOn(autoUpdates));
    CHECK(test.scheduler.count(18) == 1);
}

TEST_CASE("the automatic updates' box shows what the scheduler helper says")
{
    for (const bool enabled : {true, false}) {
        PreferencesTest test;
        test.scheduler.setInstallsUpdates(enabled);
        test.show();
        CHECK(test.user.isOn(autoUpdates) == enabled);
    }
}

TEST_CASE("a reply without the setting, or with another kind of value, means off")
{
    for (const auto& payload : {Dictionary(), Dictionary{{"Enabled", "YES"}}, Dictionary{{"Other", true}}}) {
        PreferencesTest test;
        test.scheduler.answerMessage(18, replyWith(payload));
        test.show();
        CHECK_FALSE(test.user.isOn(autoUpdates));
    }
}

TEST_CASE("with the scheduler helper out of reach the automatic updates' box stays as the interface file has it")
{
    PreferencesTest test;
    test.scheduler.answerWith(std::unexpected(platform::ServiceError::Invalid));
    test.show();
    CHECK_FALSE(test.user.isOn(autoUpdates));
    test.controller->updateAutoUpdates();
    CHECK_FALSE(test.user.isOn(autoUpdates));
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("with the scheduler helper out of reach a box that is on stays on")
{
    PreferencesTest test;
    test.show();
    CHECK(test.user.isOn(autoUpdates));
    test.scheduler.answerWith(std::unexpected(platform::ServiceError::Invalid));
    test.controller->updateAutoUpdates();
    CHECK(test.user.isOn(autoUpdates));
}

TEST_CASE("the password's box follows the right's rule")
{
    struct Case {
        std::optional<Dictionary> right;
        bool on;
    };
    for (const Case& each : std::vector<Case>{
             {Dictionary{{"rule", Array{"authenticate-admin"}}}, true},
             {Dictionary{{"rule", Array{}}}, true},
             {Dictionary{{"rule", Array{"admin", "is-administrator"}}}, true},
             {Dictionary{{"rule", Array{1, "authenticate-admin-30"}}}, true},
             {Dictionary{{"rule", Array{"is-admin"}}}, false},
             {Dictionary{{"rule", Array{"authenticate-admin", "is-admin"}}}, false},
             {Dictionary{{"class", "user"}}, false},
         }) {
        PreferencesTest test(each.right);
        test.show();
        CHECK(test.user.isOn(requirePassword) == each.on);
    }
}

TEST_CASE("a rule in its plain form means that no password is required, whatever it says")
{
    for (const char* const rule : {"authenticate-admin", "is-admin", ""}) {
        PreferencesTest test(Dictionary{{"rule", rule}});
        test.show();
        CHECK_FALSE(test.user.isOn(requirePassword));
    }
}

TEST_CASE("a right that is missing leaves the password's box as the interface file has it")
{
    PreferencesTest test(std::nullopt);
    test.show();
    CHECK_FALSE(test.user.isOn(requirePassword));
    test.user.click(requirePassword);
    test.controller->updateRequirePassword();
    CHECK(test.user.isOn(requirePassword));
}

TEST_CASE("a right that went missing leaves the password's box as it was")
{
    PreferencesTest test;
    test.show();
    CHECK(test.user.isOn(requirePassword));
    authorization::reset();
    test.controller->updateRequirePassword();
    CHECK(test.user.isOn(requirePassword));
}

TEST_CASE("switching automatic updates tells the scheduler helper, both ways")
{
    PreferencesTest test;
    test.show();
    test.user.click(autoUpdates);
    CHECK_FALSE(test.scheduler.installsUpdates());
    test.user.click(autoUpdates);
    CHECK(test.scheduler.installsUpdates());
    CHECK(test.scheduler.payloads(21)
          == std::vector<Dictionary>{Dictionary{{"Enabled", false}}, Dictionary{{"Enabled", true}}});
    CHECK(test.scheduler.count(18) == 1); // what succeeded is not read again
}

TEST_CASE("a refused change of automatic updates puts the box back and says nothing")
{
    for (const bool enabled : {true, false}) {
        PreferencesTest test;
        test.scheduler.setInstallsUpdates(enabled);
        test.scheduler.refuseMessage(21, refusal());
        test.show();
        test.user.click(autoUpdates);
        CHECK(test.user.isOn(autoUpdates) == enabled);
        CHECK(test.scheduler.messages() == std::vector<std::int64_t>{18, 21, 18});
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("a change of automatic updates that the scheduler helper does not take leaves the box as the helper had it")
{
    for (const bool enabled : {true, false}) {
        PreferencesTest test;
        test.scheduler.setInstallsUpdates(enabled);
        test.show();
        test.scheduler.answerWith(std::unexpected(platform::ServiceError::Interrupted));
        test.user.click(autoUpdates);
        CHECK(test.user.isOn(autoUpdates) == enabled);
        CHECK(test.scheduler.messages() == std::vector<std::int64_t>{18, 21, 18});
    }
}

TEST_CASE("a dismissed authentication puts the automatic updates' box back")
{
    PreferencesTest test;
    test.show();
    authorization::answerCopyRight(BRVRightModifySettings1, {Authorization::Canceled});
    test.user.click(autoUpdates);
    CHECK(test.user.isOn(autoUpdates));
    CHECK(test.scheduler.count(21) == 0);
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("the password's box sends its opposite, and the next change is authorized anew")
{
    PreferencesTest test;
    test.show();
    test.user.click(requirePassword);
    CHECK(test.scheduler.payloads(6) == std::vector<Dictionary>{Dictionary{{"Allow", true}}});
    const auto freed = authorization::calls(Operation::Free);
    REQUIRE(freed.size() == 1);
    CHECK(freed[0].flags == Authorization::DestroyRights);

    test.user.click(requirePassword);
    CHECK(test.scheduler.payloads(6).back() == Dictionary{{"Allow", false}});
    CHECK(authorization::calls(Operation::Create).size() == 2);
    CHECK(test.user.isOn(requirePassword));
}

TEST_CASE("a change of automatic updates keeps the authorization that a change of the password requirement drops")
{
    PreferencesTest test;
    test.show();
    test.user.click(autoUpdates);
    test.user.click(autoUpdates);
    CHECK(authorization::calls(Operation::Create).size() == 1);
    CHECK(authorization::calls(Operation::Free).empty());
}

TEST_CASE("a refused change of the password requirement shows the rule that is in force and keeps the authorization")
{
    for (const char* const rule : {"is-admin", "authenticate-admin"}) {
        PreferencesTest test(Dictionary{{"rule", Array{rule}}});
        test.scheduler.refuseMessage(6, refusal());
        test.show();
        const bool before = test.user.isOn(requirePassword);
        test.user.click(requirePassword);
        CHECK(test.user.isOn(requirePassword) == before);
        CHECK(authorization::calls(Operation::Free).empty());
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("a dismissed authentication counts as a refused change of the password requirement")
{
    PreferencesTest test;
    test.show();
    authorization::answerCopyRight(BRVRightModifySettings1, {Authorization::Canceled});
    test.user.click(requirePassword);
    CHECK(test.user.isOn(requirePassword));
    CHECK(test.scheduler.count(6) == 0);
}

TEST_CASE("automatic updates that are switched on elsewhere tick the box at once, open window or closed")
{
    PreferencesTest test;
    test.scheduler.setInstallsUpdates(false);
    platform::postNotification(BRVDidEnableAutoUpdates); // before there is a window
    test.show();
    CHECK_FALSE(test.user.isOn(autoUpdates));
    platform::postNotification(BRVDidEnableAutoUpdates);
    CHECK(test.user.isOn(autoUpdates));
    CHECK(test.scheduler.count(21) == 0);

    test.user.click(autoUpdates);
    test.user.closeWindow();
    platform::postNotification(BRVDidEnableAutoUpdates);
    test.show();
    CHECK(test.user.isOn(autoUpdates));
}

TEST_CASE("preferences that are gone no longer listen")
{
    PreferencesTest test;
    test.show();
    const std::weak_ptr<BRVPreferencesController> weak = test.controller;
    test.controller.reset();
    CHECK(weak.expired());
    platform::postNotification(BRVDidEnableAutoUpdates);
    CHECK_FALSE(test.user.seesWindow());
}

TEST_CASE("Tab walks through the boxes, and the space bar switches them")
{
    PreferencesTest test;
    test.show();
    CHECK(test.user.isOn(autoUpdates));
    test.user.press(autoUpdates, Key::Space);
    CHECK(test.scheduler.payloads(21).back() == Dictionary{{"Enabled", false}});
    test.user.press(requirePassword, Key::Space);
    CHECK(test.scheduler.payloads(6).back() == Dictionary{{"Allow", true}});
}
