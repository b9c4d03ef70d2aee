#include "update/BRUpdateController.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/NotificationCenter.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/ui/Alert.h"
#include "platform/ui/CheckBox.h"
#include "platform/URL.h"
#include "platform/Workspace.h"
#include "protocol/ErrorCodes.h"
#include "update/BRVPreferencesController.h"
#include "update/ProductLinks.h"
#include "version/ZRKSystemVersionManager.h"

#include <csignal>

using namespace platform::ui;
using platform::Dictionary;
using platform::localizedString;

namespace {

constexpr const char* postUpdateToolPath = "/Library/Brevane/com.zerkolin.brevane.post-update";

bool isUpToDate(const platform::Error& error)
{
    return error.domain == ZRKUpdaterErrorDomain && error.code == ZRKUpdaterErrorUpToDate;
}

Dictionary dictionaryOrEmpty(const platform::PropertyList& reply)
{
    return reply.dictionary() ? *reply.dictionary() : Dictionary();
}

void openPackage(const Dictionary& info)
{
    const auto* const address = info.stringForKey("URL");
    const std::string url = address ? *address : BRVPackageURL;
    if (platform::formsURL(url))
        platform::openURL(url);
}

// Null when it cannot be launched, which is logged.
std::shared_ptr<platform::LaunchedProgram> launchPostUpdateTool()
{
    auto tool = platform::launchProgram(platform::systemPath(postUpdateToolPath));
    if (tool)
        return *tool;
    ZRKLogMessage(LogLevelError, "Failed to launch post-update tool. %@",
                  {platform::localizedDescription(tool.error())});
    return nullptr;
}

bool installsUpdatesAutomatically()
{
    const auto reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageGetAutoUpdates);
    return reply && dictionaryOrEmpty(*reply).boolForKey(PayloadKey::Enabled);
}

void enableAutoUpdates()
{
    const Dictionary settings{{PayloadKey::Enabled, true}};
    if (BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageSetAutoUpdates, settings))
        platform::postNotification(BRVDidEnableAutoUpdates);
}

std::shared_ptr<CheckBox> autoUpdatesCheckBox()
{
    const auto title = localizedString("Install updates automatically");
    const auto& system = ZRKSystemVersionManager::sharedManager();
    if (!system.runningAtLeast(2))
        return CheckBox::createSwitchButton(title);
    auto box = CheckBox::create(title);
    if (system.runningAtLeastVersion({11, 0, 0}))
        box->setControlSize(ControlSize::Large);
    return box;
}

// The style is the warning one.
void displayFailure(const std::string& message, const platform::Error& error)
{
    Alert alert;
    alert.setStyle(AlertStyle::Warning);
    alert.setMessageText(message);
    alert.setInformativeText(ZRKError::localizedDescriptionForError(error));
    alert.runModal();
}

} // namespace

void BRUpdateController::checkUpdatesWithCompletionHandler(Completion completion)
{
    const auto handle = [completion = std::move(completion)](const BRVHelperMessager::Reply& reply) {
        if (reply)
            return displayUpdateAlertWithInfo(dictionaryOrEmpty(*reply), completion);
        if (isUpToDate(reply.error()))
            displayUpToDateAlert();
        else
            displayFetchInfoAlertWithError(reply.error());
        completion();
    };
    BRVHelperMessager::sharedMessager()->sendMessage(BRVMessageCheckForUpdates, {}, platform::Queue::main(), handle);
}

void BRUpdateController::displayUpdateAlertWithInfo(const Dictionary& info, const Completion& completion)
{
    const auto* const version = info.find(PayloadKey::HumanVersion);
    Alert alert;
    alert.setStyle(AlertStyle::Informational);
    alert.setMessageText(localizedString("New version available."));
    alert.setInformativeText(
        platform::formatString(localizedString("Brevane %@ is available. Would you like to update now?"), {version})
            .value_or(std::string()));
    alert.addButton(localizedString("Update"));
    alert.addButton(localizedString("Download"));
    alert.addButton(localizedString("Later"));
    const int response = alert.runModal();
    if (response == Alert::FirstButtonReturn)
        return updateWithCompletionHandler(completion);
    if (response == Alert::SecondButtonReturn)
        openPackage(info);
    completion();
}

void BRUpdateController::updateWithCompletionHandler(Completion completion)
{
    const auto tool = launchPostUpdateTool();
    const auto handle = [tool, completion = std::move(completion)](const BRVHelperMessager::Reply& reply) {
        // Deliberately without the completion: the helper installs, and the tool takes over.
        if (reply)
            return;
        if (tool)
            tool->sendSignal(SIGTERM);
        platform::postNotification(BRVDidFailToInstallUpdate);
        if (!userCanceledAuthentication(reply.error()))
            displayUpdateAlertWithError(reply.error());
        completion();
    };
    platform::postNotification(BRVWillInstallUpdate);
    BRVHelperMessager::sharedMessager()->sendMessage(BRVMessageInstallUpdate, {}, platform::Queue::main(), handle);
}

void BRUpdateController::displayUpToDateAlert()
{
    const bool offersAutoUpdates = !installsUpdatesAutomatically();
    Alert alert;
    alert.setStyle(AlertStyle::Informational);
    alert.setMessageText(localizedString("You are up to date."));
    alert.setInformativeText(localizedString("You are currently using the latest version of Brevane."));
    const auto box = offersAutoUpdates ? autoUpdatesCheckBox() : nullptr;
    if (box)
        alert.setAccessoryView(box);
    const bool isAborted = alert.runModal() == Alert::Abort;
    if (box && box->isOn() && !isAborted)
        enableAutoUpdates();
}

void BRUpdateController::displayFetchInfoAlertWithError(const platform::Error& error)
{
    displayFailure(localizedString("Brevane was unable to check for updates."), error);
}

void BRUpdateController::displayUpdateAlertWithError(const platform::Error& error)
{
    displayFailure(localizedString("Brevane was unable to update."), error);
}
