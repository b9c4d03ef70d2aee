#include "messaging/ZRKAuthorizationManager.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/shell/support/EditorTest.h"

#include <doctest/doctest.h>
#include <random>
#include <string>
#include <vector>

using platform::Authorization;
using platform::Dictionary;

namespace {

// Somebody without a plan at the menus, with a scheduler helper of changing moods.
class Wanderer {
public:
    explicit Wanderer(unsigned seed) : _random(seed), _editor(completeRecord())
    {
        _editor.scheduler.setInstallsUpdates(seed % 2 == 0);
        user::answerEveryAlert([this](const user::ShownAlert& alert) { return below(alert.buttons.size()); });
    }
    ~Wanderer()
    {
        scripted::service::release();
        user::runEventsUntil([] { return false; }, 20);
        user::answerEveryAlert(nullptr);
        user::takeAnsweredAlerts();
    }

    // Until the application ends, at most so many steps.
    void wander(int steps)
    {
        for (int step = 0; step < steps && !user::didTerminate(); ++step) {
            const auto deed = below(10);
            if (deed == 0)
                changeMood();
            else if (deed == 1)
                closeSomeWindow();
            else if (deed == 2)
                pressSomeKeys();
            else
                chooseSomeItem();
            user::runEvents();
        }
    }

private:
    int below(std::size_t count) { return static_cast<int>(_random() % count); }

    template <class T>
    const T& anyOf(const std::vector<T>& choices)
    {
        return choices[static_cast<std::size_t>(below(choices.size()))];
    }

    void chooseSomeItem()
    {
        static const std::vector<std::string> items{
            "aboutMenuItem",
            "preferencesMenuItem",
            "checkUpdatesMenuItem",
            "uninstallMenuItem",
            "showCurrentSettingsMenuItem",
            "undoMenuItem",
            "pasteMenuItem",
            "selectAllMenuItem",
            "minimiseMenuItem",
            "closeMenuItem",
            "mainWindowMenuItem",
            "localSnapshotsMenuItem",
            "consoleMenuItem",
            "bringAllToFrontMenuItem",
            "openWebSiteMenuItem",
            "contactByMailMenuItem",
            "quitMenuItem",
        };
        const auto& item = anyOf(items);
        if (item == "quitMenuItem" && below(4) != 0)
            return;
        try {
            _editor.user.clickMenuItem(item);
        } catch (const std::logic_error&) { // hidden or disabled: a person could not choose it either
        }
    }

    void pressSomeKeys()
    {
        static const std::vector<std::string> keys{"Ctrl+,", "Ctrl+0", "Ctrl+1", "Ctrl+2", "Ctrl+R", "Ctrl+W",
                                                   "Ctrl+M", "Tab",    "Space",  "Escape", "Return"};
        const auto windows = user::windows();
        if (!windows.empty())
            user::pressKeys(anyOf(windows), anyOf(keys));
    }

    void closeSomeWindow()
    {
        const auto windows = user::windows();
        const auto& name = windows.empty() ? std::string() : anyOf(windows);
        if (!name.empty() && (name != "mainWindow" || below(4) == 0))
            user::closeWindow(name);
    }

    void changeMood()
    {
        const platform::Error refusal{ZRKUpdaterErrorDomain, below(12), {}, nullptr};
        const auto message = anyOf<std::int64_t>({2, 6, 18, 21, 26, 27, 28});
        switch (below(6)) {
        case 0:
            return _editor.scheduler.answerMessage(26, replyWith(Dictionary{{"HumanVersion", "9"}}));
        case 1:
            return _editor.scheduler.refuseMessage(message, refusal);
        case 2:
            return _editor.scheduler.answerMessage(message, std::unexpected(platform::ServiceError::Interrupted));
        case 3:
            return scripted::authorization::answerCopyRight(
                BRVRightModifySettings1, {below(2) ? Authorization::Canceled : Authorization::Success});
        case 4:
            return scripted::service::interrupt();
        default:
            return _editor.scheduler.setInstallsUpdates(below(2) != 0);
        }
    }

    std::mt19937 _random;
    EditorTest _editor;
};

} // namespace

TEST_CASE("choices from the menus in any order, with any answers, leave the application whole")
{
    for (unsigned seed = 0; seed < 40; ++seed) {
        CAPTURE(seed);
        Wanderer wanderer(seed);
        wanderer.wander(60);
    }
}
