#include "firststart/FirstStartOutlets.h"

using namespace platform::ui;

FirstStartOutlets::FirstStartOutlets(const Interface& interface)
    : window(interface.window()),
      stackView(interface.outlet<View>("firstStartStackView")),
      introductionRow(interface.outlet<View>("introductionRow")),
      folderRow(interface.outlet<View>("folderRow")),
      folderField(interface.outlet<TextField>("folderField")),
      folderButton(interface.outlet<Button>("folderButton")),
      programRow(interface.outlet<View>("firstProgramRow")),
      programPopUp(interface.outlet<PopUpButton>("firstProgramPopUp")),
      stateRow(interface.outlet<View>("stateRow")),
      stateLabel(interface.outlet<TextField>("stateLabel")),
      installRow(interface.outlet<View>("firstInstallRow")),
      installCommandLabel(interface.outlet<TextField>("firstInstallCommandLabel")),
      lookAgainButton(interface.outlet<Button>("firstLookAgainButton")),
      destinationRow(interface.outlet<View>("firstDestinationRow")),
      destinationField(interface.outlet<TextField>("firstDestinationField")),
      destinationButton(interface.outlet<Button>("firstDestinationButton")),
      destinationNoteRow(interface.outlet<View>("destinationNoteRow")),
      secretFileRow(interface.outlet<View>("firstSecretFileRow")),
      secretFileField(interface.outlet<TextField>("firstSecretFileField")),
      secretFileButton(interface.outlet<Button>("firstSecretFileButton")),
      whenRow(interface.outlet<View>("whenRow")),
      whenPopUp(interface.outlet<PopUpButton>("whenPopUp")),
      timeLabel(interface.outlet<View>("timeLabel")),
      timePicker(interface.outlet<DatePicker>("timePicker")),
      whenNoteRow(interface.outlet<View>("whenNoteRow")),
      whenNoteLabel(interface.outlet<TextField>("whenNoteLabel")),
      faultRow(interface.outlet<View>("faultRow")),
      faultLabel(interface.outlet<TextField>("faultLabel")),
      allSettingsButton(interface.outlet<Button>("allSettingsButton")),
      notNowButton(interface.outlet<Button>("notNowButton")),
      startButton(interface.outlet<Button>("startButton"))
{
}
