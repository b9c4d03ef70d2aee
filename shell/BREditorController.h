#pragma once

#include "activity/BRVActivityController.h"
#include "backupprogram/BRVBackupProgramController.h"
#include "diagnostics/console/BRVConsoleController.h"
#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "firststart/BRVFirstStartController.h"
#include "platform/Error.h"
#include "platform/NotificationCenter.h"
#include "platform/ui/Alert.h"
#include "platform/ui/Application.h"
#include "protocol/ScheduleSettings.h"
#include "schedule/BRVViewController.h"
#include "schedule/model/ApplyAlert.h"
#include "schedule/model/EditorState.h"
#include "shell/MainWindowOutlets.h"
#include "shell/MainWindowStacks.h"
#include "update/BRVPreferencesController.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

// The application's delegate and the owner of its main window: edits the schedule and applies it. Main thread only; the
// exchanges with the scheduler helper block it. Edits live in the controls and in the mode editors until they are
// applied.
class BREditorController : public platform::ui::ApplicationDelegate,
                           public std::enable_shared_from_this<BREditorController> {
public:
    // Loads the main window and its menus.
    static std::shared_ptr<BREditorController> create();

    void awakeFromNib() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldTerminate() override;
    bool applicationShouldTerminateAfterLastWindowClosed() override;
    void applicationWillTerminate() override;
    bool applicationDidReopen(bool hasWindowInFront) override;
    void applicationShouldShow(const std::string& window) override;

    // The menus' actions.
    void showAbout();
    void showPreferences();
    void showBackupProgram();
    void checkUpdates();
    void uninstall();           // after asking
    void showCurrentSettings(); // in place of edits that were not applied; Undo brings them back
    void showMainWindow();
    void showConsole();
    void showLocalSnapshots();
    void showActivity();
    void openWebSite();
    void contactByMail();
    void quit();
    // Whether the item can be chosen now.
    bool validateMenuItem(const platform::ui::MenuItem& item) const;

    // Fetches the schedule. On failure says so, and there are no current settings; the same without a word when the
    // user gives up waiting for it.
    bool reloadSettings();
    // Shows the current settings, if there are any.
    void updateSettings();
    // Shows the rows that the controls' states call for.
    void updateStackView();

    void changeBackUpCheckbox();
    void changeOperationMode();
    void changeAllowBatteryPower(const platform::ui::CheckBox& sender);
    void changeAdvancedSettings();
    void apply();
    void applySettings(const ScheduleSettings& settings);
    void displayDidApplyAlertForSettings(const ScheduleSettings& settings);

    // The mode editors, made on first use from the current settings. Null for a mode without an editor.
    std::shared_ptr<BRVViewController> whenInactiveViewController();
    std::shared_ptr<BRVViewController> intervalViewController();
    std::shared_ptr<BRVViewController> calendarIntervalsViewController();
    // That of the selected mode.
    std::shared_ptr<BRVViewController> viewController();

    // Tells of a failed exchange with the scheduler helper and what can be done; finds out whether it is missing or
    // disabled. Attached to the main window as a sheet, or modal. The title is shown as it is.
    void displayAlertWithTitle(const std::string& title, const platform::Error& error, bool asSheet);
    // Does what the pressed button says.
    void finishDisplayAlertWithResponse(int response, bool includesMailSupport, bool includesSystemSettingsButton);
    // A notice that also warns when the system's own automatic backups are on. Both texts are shown as they are.
    void displaySystemSchedulerCheckAlert(const std::string& title, const std::string& message);
    void didFailToUninstallWithError(const platform::Error& error);

private:
    explicit BREditorController(std::unique_ptr<platform::ui::Interface> interface);
    void connectActions();
    void connectMenuItems();
    void connect(const std::shared_ptr<platform::ui::MenuItem>& item, void (BREditorController::*action)());

    // False where there is nothing to lead through.
    bool beginFirstStart();
    void endFirstStart(const BRVFirstStartController::End& end);
    void showMainWindowAtFirst();

    std::shared_ptr<BRVViewController> editorForMode(int mode);
    EditorState stateOfControls() const;
    void showState(const EditorState& state);
    void updateDependentControls();
    ModeSettings settingsOfEditors() const;
    ScheduleSettings settingsOfControls() const;
    void showSettings(const ScheduleSettings& settings);
    // The same, and lets Undo show what is there now.
    void replaceEdits(const ScheduleSettings& settings);
    // The controls, or the schedule in force, say something else than before.
    void schedulesDidChange();
    void displayApplyAlert(ApplyAlert alert);
    // After the sheet that says what was applied: another one if it needs a backup program and none is chosen.
    void didDismissApplyAlert();
    void displayNoBackupProgramAlert();

    // Adds the two buttons to the alert and attaches it to the main window.
    void beginSheetOfferingTimeMachineSettings(platform::ui::Alert& alert);
    void displayMissingSettingsPaneAlert(const std::string& advice);

    std::unique_ptr<platform::ui::Interface> _interface;
    MainWindowOutlets _outlets;
    MainWindowStacks _stacks;
    std::shared_ptr<BRVViewController> _currentViewController;
    std::array<std::shared_ptr<BRVViewController>, OperationModeCount> _viewControllers; // by OperationMode
    std::optional<ScheduleSettings> _currentSettings;                                    // as last fetched or applied
    EditorCapabilities _capabilities; // since the interface was loaded
    bool _showAdvancedSettings = false;
    bool _checkingUpdates = false;
    bool _endsUnasked = false; // since nobody could answer
    bool _isAskingAboutUpdates = false;
    bool _isUninstalled = false;      // what is the user's, to begin with
    bool _needsBackupProgram = false; // by what was just applied

    // The main window's title says so while an update is being installed.
    std::optional<platform::NotificationObserver> _updateBegins;
    std::optional<platform::NotificationObserver> _updateFails;

    // The other windows, each made when it is first asked for.
    std::shared_ptr<BRVFirstStartController> _firstStartController;
    std::shared_ptr<BRVPreferencesController> _preferencesController;
    std::shared_ptr<BRVBackupProgramController> _backupProgramController;
    std::shared_ptr<BRVConsoleController> _consoleController;
    std::shared_ptr<BRVLocalSnapshotsController> _localSnapshotsController;
    std::shared_ptr<BRVActivityController> _activityController;
};
