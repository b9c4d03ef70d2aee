#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/BackupFacility.h"
#include "platform/Localization.h"
#include "platform/Preferences.h"
#include "protocol/ErrorCodes.h"
#include "schedule/BRVCalendarIntervalViewController.h"
#include "schedule/BRVIntervalViewController.h"
#include "schedule/BRVWhenInactiveViewController.h"
#include "schedule/model/BatteryNote.h"
#include "shell/BREditorController.h"
#include "shell/ReplyWhileWaiting.h"

using namespace platform::ui;
using platform::localizedString;

namespace {

std::shared_ptr<BRVViewController> createViewController(int mode)
{
    switch (mode) {
    case OperationModeWhenInactive:
        return std::make_shared<BRVWhenInactiveViewController>();
    case OperationModeInterval:
        return BRVIntervalViewController::create();
    default:
        return BRVCalendarIntervalViewController::create();
    }
}

} // namespace

bool BREditorController::reloadSettings()
{
    auto answer = replyWhileWaiting(BRVMessageGetSettings);
    _endsUnasked = !answer;
    if (!answer) {
        _currentSettings.reset();
        return false;
    }
    BRVHelperMessager::Reply reply = std::move(*answer);
    if (reply && !reply->dictionary()) {
        reply = std::unexpected(ZRKError::errorWithDomain(ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeReply,
                                                          {{"message", std::int64_t{BRVMessageGetSettings}}}));
    }
    _currentSettings = reply ? std::optional(std::move(*reply->dictionary())) : std::nullopt;
    if (!reply)
        displayAlertWithTitle(localizedString("Could not get settings."), reply.error(), false);
    return reply.has_value();
}

std::shared_ptr<BRVViewController> BREditorController::editorForMode(int mode)
{
    if (mode < 0)
        return nullptr;
    std::shared_ptr<BRVViewController>& editor = _viewControllers.at(static_cast<std::size_t>(mode));
    if (!editor) {
        editor = createViewController(mode);
        editor->setChangeHandler([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->schedulesDidChange();
        });
        editor->setSettings(_currentSettings ? _currentSettings->dictionaryForKey(editor->name()) : nullptr);
    }
    return editor;
}

std::shared_ptr<BRVViewController> BREditorController::whenInactiveViewController()
{
    return editorForMode(OperationModeWhenInactive);
}

std::shared_ptr<BRVViewController> BREditorController::intervalViewController()
{
    return editorForMode(OperationModeInterval);
}

std::shared_ptr<BRVViewController> BREditorController::calendarIntervalsViewController()
{
    return editorForMode(OperationModeCalendarIntervals);
}

std::shared_ptr<BRVViewController> BREditorController::viewController()
{
    return editorForMode(_outlets.operationModePopUp->indexOfSelectedItem());
}

EditorState BREditorController::stateOfControls() const
{
    return {
        .backups = _outlets.backupsCheckBox->isOn(),
        .modeIndex = _outlets.operationModePopUp->indexOfSelectedItem(),
        .suspend = _outlets.suspendCheckBox->isOn(),
        .suspendFrom = _outlets.suspendFromPicker->timeOfDay(),
        .suspendTo = _outlets.suspendToPicker->timeOfDay(),
        .dontRunWhenPassive = _outlets.dontRunWhenPassiveCheckBox->isOn(),
        .dontRunWithSleepPreventers = _outlets.dontRunWithSleepPreventersCheckBox->isOn(),
        .dontRunWhenNotNetworkWired = _outlets.dontRunWhenNotNetworkWiredCheckBox->isOn(),
        .allowBattery = _outlets.allowBatteryCheckBox->isOn(),
        .snapshots = _outlets.snapshotsCheckBox->isOn(),
        .showsAdvancedSettings = _showAdvancedSettings,
    };
}

void BREditorController::showState(const EditorState& state)
{
    _outlets.backupsCheckBox->setOn(state.backups);
    _outlets.operationModePopUp->selectItemAtIndex(state.modeIndex);
    _outlets.suspendCheckBox->setOn(state.suspend);
    _outlets.suspendFromPicker->setTimeOfDay(state.suspendFrom);
    _outlets.suspendToPicker->setTimeOfDay(state.suspendTo);
    _outlets.dontRunWhenPassiveCheckBox->setOn(state.dontRunWhenPassive);
    _outlets.dontRunWithSleepPreventersCheckBox->setOn(state.dontRunWithSleepPreventers);
    _outlets.dontRunWhenNotNetworkWiredCheckBox->setOn(state.dontRunWhenNotNetworkWired);
    _outlets.allowBatteryCheckBox->setOn(state.allowBattery);
    _outlets.snapshotsCheckBox->setOn(state.snapshots);
    _showAdvancedSettings = state.showsAdvancedSettings;
    updateDependentControls();
}

void BREditorController::updateDependentControls()
{
    const EditorState state = stateOfControls();
    _outlets.operationModePopUp->setEnabled(state.enablesModes());
    _outlets.advancedSettingsButton->setHidden(state.hidesAdvancedSettingsButton());
    _outlets.advancedSettingsButton->setTitle(localizedString(state.advancedSettingsTitle()));
}

void BREditorController::updateSettings()
{
    if (_currentSettings)
        showSettings(*_currentSettings);
}

void BREditorController::replaceEdits(const ScheduleSettings& settings)
{
    const auto edits = settingsOfControls();
    if (settings != edits) {
        _outlets.window->setUndo([weak = weak_from_this(), edits] {
            if (const auto self = weak.lock())
                self->replaceEdits(edits);
        });
    }
    showSettings(settings);
}

void BREditorController::showSettings(const ScheduleSettings& settings)
{
    for (const auto& editor : _viewControllers) {
        if (editor)
            editor->setSettings(settings.dictionaryForKey(editor->name()));
    }
    showState(EditorState::showing(Schedule::fromRecord(settings), stateOfControls()));
    _currentViewController = viewController();
    updateStackView();
    schedulesDidChange();
}

void BREditorController::updateStackView()
{
    _stacks.show(stateOfControls().rows(_capabilities),
                 _currentViewController ? _currentViewController->view() : nullptr);
}

void BREditorController::changeBackUpCheckbox()
{
    updateDependentControls();
    updateStackView();
    schedulesDidChange();
}

void BREditorController::changeOperationMode()
{
    const auto previous = _currentViewController;
    _currentViewController = viewController();
    if (_currentViewController != previous)
        updateStackView();
    schedulesDidChange();
}

void BREditorController::changeAllowBatteryPower(const CheckBox& sender)
{
    schedulesDidChange();
    const auto requiresPower = platform::booleanPreference("RequiresACPower", "com.apple.TimeMachine");
    if (!needsBatteryNote(sender.state() == CheckState::Off, _capabilities, requiresPower))
        return;
    Alert alert;
    alert.setMessageText(localizedString("Important Note."));
    alert.setInformativeText(localizedString("Please make sure to enable backups while on battery power in System "
                                             "Preferences > Time Machine > Options."));
    beginSheetOfferingTimeMachineSettings(alert);
}

void BREditorController::changeAdvancedSettings()
{
    _showAdvancedSettings = !_showAdvancedSettings;
    updateDependentControls();
    updateStackView();
}

ModeSettings BREditorController::settingsOfEditors() const
{
    ModeSettings settings;
    for (std::size_t mode = 0; mode < settings.size(); ++mode) {
        if (const auto& editor = _viewControllers[mode])
            settings[mode] = editor->settings();
    }
    return settings;
}

ScheduleSettings BREditorController::settingsOfControls() const
{
    return stateOfControls().record(_currentSettings.value_or(ScheduleSettings()), _capabilities, settingsOfEditors());
}

void BREditorController::apply()
{
    _outlets.window->endEditing();
    const auto settings = settingsOfControls();
    if (isAlreadyApplied(_currentSettings, settings))
        displayApplyAlert(ApplyAlert::AlreadyApplied);
    else
        applySettings(settings);
}

void BREditorController::applySettings(const ScheduleSettings& settings)
{
    const auto reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageApplySettings, settings);
    if (reply) {
        _currentSettings = settings;
        schedulesDidChange();
        displayDidApplyAlertForSettings(settings);
        return;
    }
    const ApplyAlert alert = alertAfterFailingToApply(userCanceledAuthentication(reply.error()));
    if (alert != ApplyAlert::None)
        displayAlertWithTitle(localizedString(textsOf(alert).title), reply.error(), true);
}

void BREditorController::displayDidApplyAlertForSettings(const ScheduleSettings& settings)
{
    _needsBackupProgram = leavesBackupsOn(settings) && !platform::systemHasBackupProgram();
    displayApplyAlert(alertAfterApplying(settings));
}

void BREditorController::displayApplyAlert(ApplyAlert alert)
{
    const std::string title = localizedString(textsOf(alert).title);
    const std::string message = localizedString(textsOf(alert).message);
    if (checksSystemScheduler(alert)) {
        displaySystemSchedulerCheckAlert(title, message);
        return;
    }
    Alert plain;
    plain.setMessageText(title);
    plain.setInformativeText(message);
    plain.beginSheet(_outlets.window, nullptr); // nothing is scheduled
}
