#pragma once

#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/ProgressIndicator.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"

#include <memory>

// The controls of the backup program's window, by their identifiers. The rows stand in its stack view while they are
// called for.
struct BackupProgramOutlets {
    explicit BackupProgramOutlets(const platform::ui::Interface& interface);

    std::shared_ptr<platform::ui::Window> window;
    std::shared_ptr<platform::ui::View> stackView;

    std::shared_ptr<platform::ui::View> programRow;
    std::shared_ptr<platform::ui::PopUpButton> programPopUp;
    std::shared_ptr<platform::ui::View> programStateRow;
    std::shared_ptr<platform::ui::TextField> programStateLabel;
    std::shared_ptr<platform::ui::View> installRow;
    std::shared_ptr<platform::ui::TextField> installCommandLabel;
    std::shared_ptr<platform::ui::Button> lookAgainButton;

    std::shared_ptr<platform::ui::View> listsRow;
    std::shared_ptr<platform::ui::TableView> foldersTable;
    std::shared_ptr<platform::ui::Button> addFolderButton;
    std::shared_ptr<platform::ui::Button> removeFolderButton;
    std::shared_ptr<platform::ui::View> patternsColumn;
    std::shared_ptr<platform::ui::TableView> patternsTable;
    std::shared_ptr<platform::ui::TextField> patternField;
    std::shared_ptr<platform::ui::Button> addPatternButton;
    std::shared_ptr<platform::ui::Button> removePatternButton;

    std::shared_ptr<platform::ui::View> destinationRow;
    std::shared_ptr<platform::ui::TextField> destinationField;
    std::shared_ptr<platform::ui::Button> destinationButton;
    std::shared_ptr<platform::ui::View> secretFileRow;
    std::shared_ptr<platform::ui::TextField> secretFileField;
    std::shared_ptr<platform::ui::Button> secretFileButton;
    std::shared_ptr<platform::ui::View> wordRow;
    std::shared_ptr<platform::ui::TextField> wordField;
    std::shared_ptr<platform::ui::View> unitRow;
    std::shared_ptr<platform::ui::TextField> unitField;
    std::shared_ptr<platform::ui::View> programFaultRow;
    std::shared_ptr<platform::ui::TextField> programFaultLabel;

    std::shared_ptr<platform::ui::CheckBox> preventSleepCheckBox;
    std::shared_ptr<platform::ui::View> restoreColumn;
    std::shared_ptr<platform::ui::TextField> backupPlaceLabel;
    std::shared_ptr<platform::ui::TextField> restoreCommandLabel;
    std::shared_ptr<platform::ui::View> testResultRow;
    std::shared_ptr<platform::ui::TextField> testResultLabel;

    std::shared_ptr<platform::ui::Button> testProgramButton;
    std::shared_ptr<platform::ui::ProgressIndicator> testProgramSpinner;
    std::shared_ptr<platform::ui::Button> undoProgramButton;
    std::shared_ptr<platform::ui::Button> chooseProgramButton;
};
