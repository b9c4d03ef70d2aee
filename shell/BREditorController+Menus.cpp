#include "platform/Localization.h"
#include "platform/SystemInformation.h"
#include "platform/Workspace.h"
#include "shell/BREditorController.h"
#include "shell/ZRKButtonLinkCell.h"
#include "update/BRUpdateController.h"
#include "update/ProductLinks.h"

using namespace platform::ui;

namespace {

// Makes the window's controller when it is first asked for.
template <class Controller>
void showWindowOf(std::shared_ptr<Controller>& controller)
{
    if (!controller)
        controller = Controller::create();
    controller->showWindow();
}

} // namespace

void BREditorController::connect(const std::shared_ptr<MenuItem>& item, void (BREditorController::*action)())
{
    item->setAction([weak = weak_from_this(), action] {
        if (const auto self = weak.lock())
            ((*self).*action)();
    });
    item->setValidator([weak = weak_from_this(), weakItem = std::weak_ptr(item)] {
        const auto self = weak.lock();
        const auto validated = weakItem.lock();
        return self && validated && self->validateMenuItem(*validated);
    });
}

void BREditorController::connectMenuItems()
{
    using Self = BREditorController;
    connect(_outlets.aboutMenuItem, &Self::showAbout);
    connect(_outlets.preferencesMenuItem, &Self::showPreferences);
    connect(_outlets.backupProgramMenuItem, &Self::showBackupProgram);
    connect(_outlets.checkUpdatesMenuItem, &Self::checkUpdates);
    connect(_outlets.uninstallMenuItem, &Self::uninstall);
    connect(_outlets.showCurrentSettingsMenuItem, &Self::showCurrentSettings);
    connect(_outlets.mainWindowMenuItem, &Self::showMainWindow);
    connect(_outlets.localSnapshotsMenuItem, &Self::showLocalSnapshots);
    connect(_outlets.consoleMenuItem, &Self::showConsole);
    connect(_outlets.activityMenuItem, &Self::showActivity);
    connect(_outlets.openWebSiteMenuItem, &Self::openWebSite);
    connect(_outlets.contactByMailMenuItem, &Self::contactByMail);
    connect(_outlets.quitMenuItem, &Self::quit);
}

bool BREditorController::validateMenuItem(const MenuItem& item) const
{
    return !_checkingUpdates || item.identifier() != _outlets.checkUpdatesMenuItem->identifier();
}

void BREditorController::showAbout()
{
    const auto link = [weak = weak_from_this()](const char* title, void (BREditorController::*action)()) {
        auto button = Button::create(platform::localizedString(title), std::make_shared<ZRKButtonLinkCell>());
        button->setAction([weak, action] {
            if (const auto self = weak.lock())
                ((*self).*action)();
        });
        return button;
    };
    orderFrontAboutPanel(platform::bundleVersion(),
                         {link("Go to Web Site", &BREditorController::openWebSite),
                          link("Ask for Support", &BREditorController::contactByMail)});
}

void BREditorController::showPreferences()
{
    showWindowOf(_preferencesController);
}

void BREditorController::showBackupProgram()
{
    showWindowOf(_backupProgramController);
}

void BREditorController::showConsole()
{
    showWindowOf(_consoleController);
}

void BREditorController::showLocalSnapshots()
{
    showWindowOf(_localSnapshotsController);
}

void BREditorController::showActivity()
{
    if (!_activityController) {
        _activityController = BRVActivityController::create([weak = weak_from_this()] {
            const auto self = weak.lock();
            return self ? BRVActivityController::Schedules{self->_currentSettings, self->settingsOfControls()}
                        : BRVActivityController::Schedules();
        });
    }
    _activityController->showWindow();
}

void BREditorController::schedulesDidChange()
{
    if (_activityController)
        _activityController->schedulesDidChange();
}

void BREditorController::checkUpdates()
{
    _checkingUpdates = true;
    BRUpdateController::checkUpdatesWithCompletionHandler([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->_checkingUpdates = false;
    });
}

void BREditorController::showCurrentSettings()
{
    if (_currentSettings)
        replaceEdits(ScheduleSettings(*_currentSettings));
}

void BREditorController::showMainWindow()
{
    _outlets.window->makeKeyAndOrderFront();
}

void BREditorController::openWebSite()
{
    platform::openURL(BRVWebSiteURL);
}

void BREditorController::contactByMail()
{
    platform::openURL(BRVSupportMailURL);
}

void BREditorController::quit()
{
    terminateApplication();
}
