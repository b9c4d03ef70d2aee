#include "shell/MainWindowOutlets.h"

using namespace platform::ui;

MainWindowOutlets::MainWindowOutlets(const Interface& interface)
    : window(interface.window()),
      backupsCheckBox(interface.outlet<CheckBox>("backupsCheckBox")),
      operationModePopUp(interface.outlet<PopUpButton>("operationModePopUp")),
      allowBatteryCheckBox(interface.outlet<CheckBox>("allowBatteryCheckBox")),
      snapshotsCheckBox(interface.outlet<CheckBox>("snapshotsCheckBox")),
      suspendCheckBox(interface.outlet<CheckBox>("suspendCheckBox")),
      suspendFromPicker(interface.outlet<DatePicker>("suspendFromPicker")),
      suspendToLabel(interface.outlet<View>("suspendToLabel")),
      suspendToPicker(interface.outlet<DatePicker>("suspendToPicker")),
      dontRunWhenPassiveCheckBox(interface.outlet<CheckBox>("dontRunWhenPassiveCheckBox")),
      dontRunWithSleepPreventersCheckBox(interface.outlet<CheckBox>("dontRunWithSleepPreventersCheckBox")),
      dontRunWhenNotNetworkWiredCheckBox(interface.outlet<CheckBox>("dontRunWhenNotNetworkWiredCheckBox")),
      advancedSettingsButton(interface.outlet<Button>("advancedSettingsButton")),
      applyButton(interface.outlet<Button>("applyButton")),
      stackView(interface.outlet<View>("stackView")),
      modeStackView(interface.outlet<View>("modeStackView")),
      suspendStackView(interface.outlet<View>("suspendStackView")),
      aboutMenuItem(interface.menuItem("aboutMenuItem")),
      preferencesMenuItem(interface.menuItem("preferencesMenuItem")),
      backupProgramMenuItem(interface.menuItem("backupProgramMenuItem")),
      checkUpdatesMenuItem(interface.menuItem("checkUpdatesMenuItem")),
      uninstallMenuItem(interface.menuItem("uninstallMenuItem")),
      showCurrentSettingsMenuItem(interface.menuItem("showCurrentSettingsMenuItem")),
      mainWindowMenuItem(interface.menuItem("mainWindowMenuItem")),
      localSnapshotsMenuItem(interface.menuItem("localSnapshotsMenuItem")),
      consoleMenuItem(interface.menuItem("consoleMenuItem")),
      activityMenuItem(interface.menuItem("activityMenuItem")),
      openWebSiteMenuItem(interface.menuItem("openWebSiteMenuItem")),
      contactByMailMenuItem(interface.menuItem("contactByMailMenuItem")),
      quitMenuItem(interface.menuItem("quitMenuItem"))
{
}
