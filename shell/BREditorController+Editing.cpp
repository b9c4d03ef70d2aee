#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Calendar.h"
#include "platform/Localization.h"
#include "platform/Preferences.h"
#include "protocol/ErrorCodes.h"
#include "protocol/ScheduleSettings.h"
#include "schedule/BRVCalendarIntervalViewController.h"
#include "schedule/BRVIntervalViewController.h"
#include "schedule/BRVWhenInactiveViewController.h"
#include "shell/BREditorController.h"
#include "version/ZRKSystemVersionManager.h"

using namespace platform::ui;
using platform::localizedString;

namespace {

bool runningAtLeast(unsigned release)
{
    return ZRKSystemVersionManager::sharedManager().runningAtLeast(release);
}

bool supportsPassiveCondition()
{
    return runningAtLeast(0);
}

bool supportsWiredNetworkCondition()
{
    return runningAtLeast(4);
}

void setPicker(DatePicker& picker, const platform::Dictionary& settings, const char* hourKey, const char* minuteKey)
{
    const auto time =
        platform::timeOfDayFromComponents(settings.integerForKey(hourKey), settings.integerForKey(minuteKey));
    if (time)
        picker.setTimeOfDay(*time);
}

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
    auto reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageGetSettings);
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
    if (mode < 0 || mode >= OperationModeCount)
        return nullptr;
    std::shared_ptr<BRVViewController>& editor = _viewControllers[static_cast<std::size_t>(mode)];
    if (!editor) {
        editor = createViewController(mode);
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

void BREditorController::updateSettings()
{
    if (!_currentSettings)
        return;
    const ScheduleSettings& settings = *_currentSettings;
    for (const auto& editor : _viewControllers) {
        if (editor)
            editor->setSettings(settings.dictionaryForKey(editor->name()));
    }
    const bool disabled = settings.boolForKey(ScheduleKey::Disabled);
    const bool backups = !disabled && settings.boolForKey(ScheduleKey::Backups);
    _outlets.backupsCheckBox->setOn(backups);
    updateBackupsControls(backups);

    _outlets.operationModePopUp->selectItemAtIndex(operationModeOfSettings(settings));
    _currentViewController = viewController();

    _outlets.suspendCheckBox->setOn(settings.boolForKey(ScheduleKey::Suspend));
    if (const platform::Dictionary* suspend = settings.dictionaryForKey(ScheduleKey::SuspendSettings)) {
        setPicker(*_outlets.suspendFromPicker, *suspend, ScheduleKey::StartHour, ScheduleKey::StartMinute);
        setPicker(*_outlets.suspendToPicker, *suspend, ScheduleKey::EndHour, ScheduleKey::EndMinute);
    }

    const bool passive = settings.boolForKey(ScheduleKey::DontRunWhenPassive);
    const bool sleepPreventers = settings.boolForKey(ScheduleKey::DontRunWithSleepPreventers);
    const bool notWired = settings.boolForKey(ScheduleKey::DontRunWhenNotNetworkWired);
    _outlets.dontRunWhenPassiveCheckBox->setOn(passive);
    _outlets.dontRunWithSleepPreventersCheckBox->setOn(sleepPreventers);
    _outlets.dontRunWhenNotNetworkWiredCheckBox->setOn(notWired);
    _outlets.allowBatteryCheckBox->setOn(settings.boolForKey(ScheduleKey::AllowBattery));
    _outlets.snapshotsCheckBox->setOn(!disabled && settings.boolForKey(ScheduleKey::Snapshots));

    // Once shown, the advanced settings stay so.
    _showAdvancedSettings = _showAdvancedSettings || passive || sleepPreventers || notWired;
    updateAdvancedSettingsButton();
    updateStackView();
}

void BREditorController::updateBackupsControls(bool on)
{
    _outlets.operationModePopUp->setEnabled(on);
    _outlets.advancedSettingsButton->setHidden(!on);
}

void BREditorController::updateAdvancedSettingsButton()
{
    _outlets.advancedSettingsButton->setTitle(
        localizedString(_showAdvancedSettings ? "Hide Advanced Settings" : "Show Advanced Settings"));
}

void BREditorController::updateStackView()
{
    std::vector<std::shared_ptr<View>> rows{_outlets.modeStackView};
    if (_outlets.backupsCheckBox->isOn()) {
        if (_currentViewController)
            rows.push_back(_currentViewController->view());
        rows.push_back(_outlets.suspendStackView);
        if (_supportsBattery)
            rows.push_back(_outlets.allowBatteryCheckBox);
        if (_showAdvancedSettings) {
            if (supportsPassiveCondition())
                rows.push_back(_outlets.dontRunWhenPassiveCheckBox);
            rows.push_back(_outlets.dontRunWithSleepPreventersCheckBox);
            if (supportsWiredNetworkCondition())
                rows.push_back(_outlets.dontRunWhenNotNetworkWiredCheckBox);
        }
    }
    if (_supportsSnapshots)
        rows.push_back(_outlets.snapshotsCheckBox);
    _stackView->setViews(rows);
}

void BREditorController::changeBackUpCheckbox()
{
    updateBackupsControls(_outlets.backupsCheckBox->isOn());
    updateStackView();
}

void BREditorController::changeOperationMode()
{
    const auto previous = _currentViewController;
    _currentViewController = viewController();
    if (_currentViewController != previous)
        updateStackView();
}

void BREditorController::changeAllowBatteryPower(const CheckBox& sender)
{
    if (sender.state() == CheckState::Off || !runningAtLeast(5))
        return;
    const auto requiresPower = platform::preferenceValue("RequiresACPower", "com.apple.TimeMachine");
    if (requiresPower && requiresPower->isNumber() && !requiresPower->boolValue())
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
    updateAdvancedSettingsButton();
    updateStackView();
}

ScheduleSettings BREditorController::settingsFromControls() const
{
    ScheduleSettings settings = _currentSettings.value_or(ScheduleSettings());
    settings.remove(ScheduleKey::Disabled);
    settings.set(ScheduleKey::Backups, _outlets.backupsCheckBox->isOn());
    settings.set(ScheduleKey::BackupsMode, backupsModeForIndex(_outlets.operationModePopUp->indexOfSelectedItem()));
    for (const auto& editor : _viewControllers) {
        if (editor)
            settings.set(editor->name(), editor->settings());
    }

    settings.set(ScheduleKey::Suspend, _outlets.suspendCheckBox->isOn());
    const platform::TimeOfDay start = _outlets.suspendFromPicker->timeOfDay();
    const platform::TimeOfDay end = _outlets.suspendToPicker->timeOfDay();
    settings.set(ScheduleKey::SuspendSettings,
                 platform::Dictionary{{ScheduleKey::StartHour, start.hour},
                                      {ScheduleKey::StartMinute, start.minute},
                                      {ScheduleKey::EndHour, end.hour},
                                      {ScheduleKey::EndMinute, end.minute}});

    // Hiding the advanced settings switches them off.
    const auto advanced = [this](const CheckBox& box) { return _showAdvancedSettings && box.isOn(); };
    settings.set(ScheduleKey::DontRunWhenPassive,
                 supportsPassiveCondition() && advanced(*_outlets.dontRunWhenPassiveCheckBox));
    settings.set(ScheduleKey::DontRunWithSleepPreventers, advanced(*_outlets.dontRunWithSleepPreventersCheckBox));
    settings.set(ScheduleKey::DontRunWhenNotNetworkWired,
                 supportsWiredNetworkCondition() && advanced(*_outlets.dontRunWhenNotNetworkWiredCheckBox));
    if (_supportsBattery)
        settings.set(ScheduleKey::AllowBattery, _outlets.allowBatteryCheckBox->isOn());
    if (_supportsSnapshots)
        settings.set(ScheduleKey::Snapshots, _outlets.snapshotsCheckBox->isOn());
    return settings;
}

void BREditorController::apply()
{
    const ScheduleSettings settings = settingsFromControls();
    if (_currentSettings == settings) {
        displaySystemSchedulerCheckAlert(localizedString("Settings already applied."),
                                         localizedString("The settings you are attempting to apply are already the "
                                                         "ones installed in your system."));
        return;
    }
    applySettings(settings);
}

void BREditorController::applySettings(const ScheduleSettings& settings)
{
    const auto reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageApplySettings, settings);
    if (reply) {
        _currentSettings = settings;
        displayDidApplyAlertForSettings(settings);
    } else if (!userCanceledAuthentication(reply.error())) {
        displayAlertWithTitle(localizedString("Failed to apply settings."), reply.error(), true);
    }
}

void BREditorController::displayDidApplyAlertForSettings(const ScheduleSettings& settings)
{
    const std::string title = localizedString("Settings applied successfully.");
    if (!settings.boolForKey(ScheduleKey::Disabled)
        && (settings.boolForKey(ScheduleKey::Backups) || settings.boolForKey(ScheduleKey::Snapshots))) {
        displaySystemSchedulerCheckAlert(title, localizedString("Brevane will now enforce the new scheduling."));
        return;
    }
    Alert alert;
    alert.setMessageText(title);
    alert.setInformativeText(localizedString("Brevane will not schedule backups anymore."));
    alert.addButton(localizedString("OK"));
    alert.beginSheet(_outlets.window, nullptr);
}
