#include "diagnostics/log/ZRKLog.h"
#include "platform/Localization.h"
#include "platform/PowerSources.h"
#include "platform/SystemInformation.h"
#include "platform/ui/WeakAction.h"
#include "platform/UserDefaults.h"
#include "protocol/SessionAgent.h"
#include "shell/BREditorController.h"
#include "shell/menus/MainMenu.h"
#include "shell/UserDefaultKeys.h"
#include "update/BRUpdateController.h"
#include "version/ZRKSystemVersionManager.h"

using namespace platform::ui;

std::shared_ptr<BREditorController> BREditorController::create()
{
    const std::shared_ptr<BREditorController> controller(
        new BREditorController(Interface::load("MainWindow", mainMenu(menuConvention()))));
    controller->connectActions();
    return controller;
}

BREditorController::BREditorController(std::unique_ptr<Interface> interface)
    : _interface(std::move(interface)),
      _outlets(*_interface),
      _stacks(_outlets)
{
}

void BREditorController::connectActions()
{
    const auto action = weakActions(weak_from_this());
    using Self = BREditorController;
    _outlets.backupsCheckBox->setAction(action([](Self& self) { self.changeBackUpCheckbox(); }));
    _outlets.operationModePopUp->setAction(action([](Self& self) { self.changeOperationMode(); }));
    _outlets.allowBatteryCheckBox->setAction(
        action([](Self& self) { self.changeAllowBatteryPower(*self._outlets.allowBatteryCheckBox); }));
    _outlets.advancedSettingsButton->setAction(action([](Self& self) { self.changeAdvancedSettings(); }));
    _outlets.applyButton->setAction(action([](Self& self) { self.apply(); }));
    const auto edited = action([](Self& self) { self.schedulesDidChange(); });
    for (const std::shared_ptr<Control>& control : std::initializer_list<std::shared_ptr<Control>>{
             _outlets.suspendCheckBox, _outlets.suspendFromPicker, _outlets.suspendToPicker,
             _outlets.dontRunWhenPassiveCheckBox, _outlets.dontRunWithSleepPreventersCheckBox,
             _outlets.dontRunWhenNotNetworkWiredCheckBox, _outlets.snapshotsCheckBox})
        control->setAction(edited);
    connectMenuItems();
}

void BREditorController::awakeFromNib()
{
    _outlets.window->setAutorecalculatesKeyViewLoop(true);
    const auto window = _outlets.window;
    _updateBegins.emplace(BRVWillInstallUpdate,
                          [window] { window->setTitle(platform::localizedString("Brevane is being updated")); });
    _updateFails.emplace(BRVDidFailToInstallUpdate, [window, title = window->title()] { window->setTitle(title); });
    _capabilities = EditorCapabilities::of(platform::supportsBatteryPower().value_or(false), [](unsigned release) {
        return ZRKSystemVersionManager::sharedManager().runningAtLeast(release);
    });
    _stacks.arrange();
    if (!_capabilities.snapshots) {
        _outlets.localSnapshotsMenuItem->setHidden(true);
        _outlets.localSnapshotsMenuItem->setKeyEquivalent("");
        if (const auto next = _outlets.localSnapshotsMenuItem->next())
            next->setKeyEquivalent("1");
    }
}

void BREditorController::applicationDidFinishLaunching()
{
    ZRKLogMessage(LogLevelInfo, "Running version %@.", {platform::bundleVersion()});
    if (!platform::userDefaultBool(BRVDidAskAboutAutoUpdates))
        platform::disableSuddenTermination(); // or the question could not be asked
    if (!reloadSettings()) {
        terminateApplication();
        return;
    }
    updateSettings();
    if (!beginFirstStart())
        showMainWindowAtFirst();
}

void BREditorController::showMainWindowAtFirst()
{
    _outlets.window->layoutIfNeeded();
    _outlets.window->center();
    _outlets.window->makeKeyAndOrderFront();
}

bool BREditorController::applicationShouldTerminateAfterLastWindowClosed()
{
    return true;
}

bool BREditorController::applicationDidReopen(bool hasWindowInFront)
{
    // Not over the window that the user left, while the launch still fetches the schedule, nor when it is over.
    if (hasWindowInFront)
        return false;
    if (_outlets.window->isVisible()) {
        showMainWindow();
        return true;
    }
    if (!_firstStartController || !_firstStartController->isVisible())
        return false;
    _firstStartController->showWindow();
    return true;
}

void BREditorController::applicationShouldShow(const std::string& window)
{
    if (!_outlets.window->isVisible())
        return;
    if (window == BRVShowActivity)
        showActivity();
    else if (window == BRVShowLog)
        showConsole();
}
