#pragma once

#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"

#include <memory>

// The parts of the main window and its menus that code refers to.
struct MainWindowOutlets {
    std::shared_ptr<platform::ui::Window> window;
    std::shared_ptr<platform::ui::CheckBox> backupsCheckBox;
    std::shared_ptr<platform::ui::PopUpButton> operationModePopUp; // by OperationMode
    std::shared_ptr<platform::ui::CheckBox> allowBatteryCheckBox;
    std::shared_ptr<platform::ui::CheckBox> snapshotsCheckBox;
    std::shared_ptr<platform::ui::CheckBox> suspendCheckBox;
    std::shared_ptr<platform::ui::DatePicker> suspendFromPicker;
    std::shared_ptr<platform::ui::View> suspendToLabel;
    std::shared_ptr<platform::ui::DatePicker> suspendToPicker;
    std::shared_ptr<platform::ui::CheckBox> dontRunWhenPassiveCheckBox;
    std::shared_ptr<platform::ui::CheckBox> dontRunWithSleepPreventersCheckBox;
    std::shared_ptr<platform::ui::CheckBox> dontRunWhenNotNetworkWiredCheckBox;
    std::shared_ptr<platform::ui::Button> advancedSettingsButton;
    std::shared_ptr<platform::ui::Button> applyButton;
    std::shared_ptr<platform::ui::View> stackView;
    std::shared_ptr<platform::ui::View> modeStackView;
    std::shared_ptr<platform::ui::View> suspendStackView;

    std::shared_ptr<platform::ui::MenuItem> aboutMenuItem;
    std::shared_ptr<platform::ui::MenuItem> preferencesMenuItem;
    std::shared_ptr<platform::ui::MenuItem> backupProgramMenuItem;
    std::shared_ptr<platform::ui::MenuItem> checkUpdatesMenuItem;
    std::shared_ptr<platform::ui::MenuItem> uninstallMenuItem;
    std::shared_ptr<platform::ui::MenuItem> showCurrentSettingsMenuItem;
    std::shared_ptr<platform::ui::MenuItem> mainWindowMenuItem;
    std::shared_ptr<platform::ui::MenuItem> localSnapshotsMenuItem;
    std::shared_ptr<platform::ui::MenuItem> consoleMenuItem;
    std::shared_ptr<platform::ui::MenuItem> activityMenuItem;
    std::shared_ptr<platform::ui::MenuItem> openWebSiteMenuItem;
    std::shared_ptr<platform::ui::MenuItem> contactByMailMenuItem;
    std::shared_ptr<platform::ui::MenuItem> quitMenuItem;

    // A missing outlet ends the process with its name.
    explicit MainWindowOutlets(const platform::ui::Interface& interface);
};
