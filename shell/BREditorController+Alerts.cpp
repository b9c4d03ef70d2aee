#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/BackgroundItem.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/Preferences.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/ui/Waiting.h"
#include "platform/Workspace.h"
#include "protocol/ErrorCodes.h"
#include "shell/BREditorController.h"
#include "version/ZRKSystemVersionManager.h"

#include <utility>

using namespace platform::ui;
using platform::localizedString;

namespace {

constexpr const char* launchDaemonPath = "/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist";
constexpr const char* schedulerToolPath = "/Library/Brevane/com.zerkolin.brevane.scheduler";
constexpr const char* timeMachinePanePath = "/System/Library/PreferencePanes/TimeMachine.prefPane";

struct Diagnosis {
    std::string text;
    bool includesMailSupport = false;
    bool includesSystemSettingsButton = false;
};

bool backgroundItemAwaitsApproval()
{
    return ZRKSystemVersionManager::sharedManager().runningAtLeastVersion({13, 0, 0})
        && platform::backgroundItemStatus(platform::systemPath(launchDaemonPath))
        == platform::BackgroundItemStatus::RequiresApproval;
}

Diagnosis diagnoseUnavailableService()
{
    if (!platform::fileExists(platform::systemPath(launchDaemonPath))
        || !platform::fileExists(platform::systemPath(schedulerToolPath))) {
        return {localizedString("The background scheduler is not installed. This is fixed by reinstalling the latest "
                                "version available from the web site.")};
    }
    if (backgroundItemAwaitsApproval()) {
        return {localizedString("The background scheduler has been disabled.\n\n"
                                "1. Click the \"Open System Settings\" button below\n"
                                "2. Locate the table titled \"Allow in the Background\" (it's the second table)\n"
                                "3. Enable the item named either \"Brevane\" or \"Joren VALKE\"\n\n"
                                "If this doesn't solve the issue, try reinstalling the latest version available from "
                                "the web site."),
                false, true};
    }
    return {localizedString("The background scheduler appears to be disabled. This is usually fixed by reinstalling "
                            "the latest version available from the web site."),
            true, false};
}

Diagnosis diagnose(const platform::Error& error)
{
    if (error.domain == ZRKMessagerErrorDomain && error.code == ZRKMessagerErrorServiceUnavailable)
        return diagnoseUnavailableService();
    const std::string description = ZRKError::localizedDescriptionForError(error);
    // The advice alone is not for translation.
    const char* advice = "You should try installing the latest version available from the web site.";
    return {platform::formatString(localizedString("%@\n\n%@"), {description, advice}).value_or(description), true,
            false};
}

} // namespace

void BREditorController::displayAlertWithTitle(const std::string& title, const platform::Error& error, bool asSheet)
{
    const Diagnosis diagnosis = diagnose(error);
    const bool mail = diagnosis.includesMailSupport;
    const bool settings = diagnosis.includesSystemSettingsButton;

    Alert alert;
    alert.setStyle(AlertStyle::Critical);
    alert.setMessageText(title);
    alert.setInformativeText(diagnosis.text);
    if (settings)
        alert.addButton(localizedString("Open System Settings"));
    alert.addButton(localizedString("Go to Web Site"));
    if (mail)
        alert.addButton(localizedString("Ask for Support"));
    if (!settings)
        alert.addButton(localizedString("OK"));

    if (!asSheet) {
        finishDisplayAlertWithResponse(alert.runModal(), mail, settings);
        return;
    }
    alert.beginSheet(_outlets.window, [weak = weak_from_this(), mail, settings](int response) {
        if (const auto self = weak.lock())
            self->finishDisplayAlertWithResponse(response, mail, settings);
    });
}

void BREditorController::finishDisplayAlertWithResponse(int response, bool includesMailSupport,
                                                        bool includesSystemSettingsButton)
{
    if (includesSystemSettingsButton) {
        if (response == Alert::FirstButtonReturn) {
            if (!waitForAnswer(localizedString("Opening the settings…"), platform::openBackgroundItemSettings)) {
                displayMissingSettingsPaneAlert(platform::backgroundItemAdvice());
            }
        } else if (response == Alert::SecondButtonReturn) {
            openWebSite();
        }
    } else if (response == Alert::FirstButtonReturn) {
        openWebSite();
    } else if (response == Alert::SecondButtonReturn && includesMailSupport) {
        contactByMail();
    }
}

void BREditorController::displaySystemSchedulerCheckAlert(const std::string& title, const std::string& message)
{
    Alert alert;
    alert.setMessageText(title);
    if (!platform::booleanPreference("AutoBackup", "com.apple.TimeMachine").value_or(false)) {
        alert.setInformativeText(message);
        alert.beginSheet(_outlets.window, [weak = weak_from_this()](int) {
            if (const auto self = weak.lock())
                self->didDismissApplyAlert();
        });
        return;
    }
    const std::string advice = localizedString(
        "Please make sure to disable automatic backups in System Preferences in order to turn off the system "
        "scheduler.");
    alert.setInformativeText(platform::formatString(localizedString("%@ %@"), {message, advice}).value_or(message));
    beginSheetOfferingTimeMachineSettings(alert);
}

void BREditorController::beginSheetOfferingTimeMachineSettings(Alert& alert)
{
    alert.addButton(localizedString("Open System Preferences"));
    alert.addButton(localizedString("OK"));
    alert.beginSheet(_outlets.window, [weak = weak_from_this()](int response) {
        const auto self = weak.lock();
        if (!self)
            return;
        const bool opens = response == Alert::FirstButtonReturn;
        if (opens && !waitForAnswer(localizedString("Opening the settings…"), [] {
                return platform::openFile(platform::systemPath(timeMachinePanePath));
            }))
            self->displayMissingSettingsPaneAlert(platform::backupSettingsAdvice());
        else
            self->didDismissApplyAlert();
    });
}

void BREditorController::didDismissApplyAlert()
{
    if (!std::exchange(_needsBackupProgram, false))
        return;
    BRVHelperMessager::sharedMessager()->getBackupProgram(
        platform::Queue::main(), [weak = weak_from_this()](const auto& reply) {
            const auto self = weak.lock();
            if (self && reply && !ProgramOffer::inReply(*reply).hasChoice())
                self->displayNoBackupProgramAlert();
        });
}

void BREditorController::displayNoBackupProgramAlert()
{
    Alert alert;
    alert.setMessageText(localizedString("No backup program is chosen."));
    alert.setInformativeText(localizedString("No backups are made while no backup program is chosen."));
    alert.addButton(localizedString("Choose…"));
    alert.addButton(localizedString("Later"));
    alert.beginSheet(_outlets.window, [weak = weak_from_this()](int response) {
        const auto self = weak.lock();
        if (self && response == Alert::FirstButtonReturn)
            self->showBackupProgram();
    });
}

void BREditorController::displayMissingSettingsPaneAlert(const std::string& advice)
{
    Alert alert;
    alert.setStyle(AlertStyle::Informational);
    alert.setMessageText(localizedString("The settings could not be opened."));
    alert.setInformativeText(advice);
    // Before the main window shows there is nothing that a sheet could be attached to.
    if (_outlets.window->isVisible())
        alert.beginSheet(_outlets.window, nullptr);
    else
        alert.runModal();
}

void BREditorController::didFailToUninstallWithError(const platform::Error& error)
{
    Alert alert;
    alert.setStyle(AlertStyle::Critical);
    alert.setMessageText(localizedString("Could not uninstall."));
    alert.setInformativeText(ZRKError::localizedDescriptionForError(error));
    alert.runModal();
}
