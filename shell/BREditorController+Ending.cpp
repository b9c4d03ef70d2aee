#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Folder.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/UserDefaults.h"
#include "shell/BREditorController.h"
#include "shell/ReplyWhileWaiting.h"
#include "shell/UserDefaultKeys.h"

using namespace platform::ui;
using platform::Dictionary;
using platform::localizedString;

namespace {

int answerAboutAutoUpdates()
{
    Alert alert;
    alert.setMessageText(localizedString("Do you want to enable automatic updates?"));
    alert.setInformativeText(localizedString(
        "Updates are downloaded securely and verified before installation. You can change this setting at any time "
        "from the preferences."));
    alert.addButton(localizedString("Enable"));
    alert.addButton(localizedString("Maybe Later"));
    return alert.runModal();
}

bool userWantsToUninstall()
{
    Alert alert;
    alert.setStyle(AlertStyle::Warning);
    alert.setMessageText(localizedString("Are you sure you want to uninstall Brevane?"));
    alert.setInformativeText(localizedString("You can't undo this action."));
    alert.addButton(localizedString("Uninstall"));
    alert.addButton(localizedString("Cancel"));
    return alert.runModal() == Alert::FirstButtonReturn;
}

} // namespace

bool BREditorController::applicationShouldTerminate()
{
    if (_endsUnasked || platform::userDefaultBool(BRVDidAskAboutAutoUpdates))
        return true;
    const auto reply = replyWhileWaiting(BRVMessageGetAutoUpdates);
    if (!reply || !*reply)
        return true; // the question comes at a later end
    platform::setUserDefault(BRVDidAskAboutAutoUpdates, true);
    const auto* const settings = (*reply)->dictionary();
    const bool enabled = settings && settings->boolForKey(PayloadKey::Enabled);
    _isAskingAboutUpdates = !enabled;
    const int answer = enabled ? Alert::Stop : answerAboutAutoUpdates();
    _isAskingAboutUpdates = false;
    if (answer == Alert::Abort)
        platform::setUserDefault(BRVDidAskAboutAutoUpdates, false); // nobody could answer
    if (answer == Alert::FirstButtonReturn) {
        (void)BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageSetAutoUpdates,
                                                                          Dictionary{{PayloadKey::Enabled, true}});
    }
    return true;
}

void BREditorController::applicationWillTerminate()
{
    if (_isAskingAboutUpdates)
        platform::setUserDefault(BRVDidAskAboutAutoUpdates, false); // the answer never came
    if (_backupProgramController && !_isUninstalled)
        _backupProgramController->keepEdits();
}

void BREditorController::uninstall()
{
    if (!userWantsToUninstall())
        return;
    // What is the user's goes first, and stays gone whatever becomes of the rest.
    _activityController.reset(); // or its window would remember its place once more
    (void)platform::removeFolder(platform::homeDirectory() + "/Library/Logs/Brevane");
    platform::removeUserDefaults();
    _isUninstalled = true;
    BRVHelperMessager::sharedMessager()->sendMessage(BRVMessageUninstall, {}, platform::Queue::main(),
                                                     [weak = weak_from_this()](const BRVHelperMessager::Reply& reply) {
                                                         const auto self = weak.lock();
                                                         if (self && !reply
                                                             && !userCanceledAuthentication(reply.error()))
                                                             self->didFailToUninstallWithError(reply.error());
                                                     });
}
