#pragma once

#include "platform/ui/Button.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/TextField.h"

#include <memory>

// The controls of the first start's window, by their identifiers. The rows stand in its stack view while they are
// called for.
struct FirstStartOutlets {
    // A missing outlet ends the process with its name.
    explicit FirstStartOutlets(const platform::ui::Interface& interface);

    std::shared_ptr<platform::ui::Window> window;
    std::shared_ptr<platform::ui::View> stackView;
    std::shared_ptr<platform::ui::View> introductionRow;

    std::shared_ptr<platform::ui::View> folderRow;
    std::shared_ptr<platform::ui::TextField> folderField;
    std::shared_ptr<platform::ui::Button> folderButton;

    std::shared_ptr<platform::ui::View> programRow;
    std::shared_ptr<platform::ui::PopUpButton> programPopUp;
    std::shared_ptr<platform::ui::View> stateRow;
    std::shared_ptr<platform::ui::TextField> stateLabel;
    std::shared_ptr<platform::ui::View> installRow;
    std::shared_ptr<platform::ui::TextField> installCommandLabel;
    std::shared_ptr<platform::ui::Button> lookAgainButton;

    std::shared_ptr<platform::ui::View> destinationRow;
    std::shared_ptr<platform::ui::TextField> destinationField;
    std::shared_ptr<platform::ui::Button> destinationButton;
    std::shared_ptr<platform::ui::View> destinationNoteRow;
    std::shared_ptr<platform::ui::View> secretFileRow;
    std::shared_ptr<platform::ui::TextField> secretFileField;
    std::shared_ptr<platform::ui::Button> secretFileButton;

    std::shared_ptr<platform::ui::View> whenRow;
    std::shared_ptr<platform::ui::PopUpButton> whenPopUp; // by FirstStartDraft::When
    std::shared_ptr<platform::ui::View> timeLabel;
    std::shared_ptr<platform::ui::DatePicker> timePicker;
    std::shared_ptr<platform::ui::View> whenNoteRow;
    std::shared_ptr<platform::ui::TextField> whenNoteLabel;
    std::shared_ptr<platform::ui::View> faultRow;
    std::shared_ptr<platform::ui::TextField> faultLabel;

    std::shared_ptr<platform::ui::Button> allSettingsButton;
    std::shared_ptr<platform::ui::Button> notNowButton;
    std::shared_ptr<platform::ui::Button> startButton;
};
