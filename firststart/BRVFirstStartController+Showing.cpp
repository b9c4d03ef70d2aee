#include "backupprogram/ChoiceWords.h"
#include "backupprogram/PopUpTitles.h"
#include "firststart/BRVFirstStartController.h"
#include "platform/BackupFacility.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "protocol/BackupProgram.h"

using namespace platform::ui;
using platform::localizedString;

namespace {

std::string filled(const std::string& format, const std::string& value)
{
    return platform::formatString(format, {value}).value_or(format);
}

std::string stateWithoutProgram(const OfferedProgram* toInstall)
{
    if (!toInstall)
        return ChoiceWords::stateOfNone(nullptr);
    if (toInstall->install.empty())
        return ChoiceWords::state(*toInstall);
    return filled(localizedString("No backup program is ready. %@ is a good choice; this command installs it:"),
                  toInstall->name);
}

} // namespace

void BRVFirstStartController::update()
{
    updatePrograms();
    updateState();
    updateWhen();
    _outlets->faultLabel->setStringValue(_fault);
    _outlets->startButton->setEnabled(canStart());
    _outlets->allSettingsButton->setEnabled(!_isSending);
    _outlets->notNowButton->setEnabled(!_isSending);
    _outlets->lookAgainButton->setEnabled(!_isSending);
    updateRows();
}

void BRVFirstStartController::updatePrograms()
{
    std::vector<std::string> titles;
    int selected = -1;
    for (const auto* const each : FirstStartDraft::programs(_offer)) {
        if (each->identifier == _draft.program)
            selected = static_cast<int>(titles.size());
        titles.push_back(ChoiceWords::title(*each));
    }
    showTitles(*_outlets->programPopUp, titles, selected);
}

void BRVFirstStartController::updateState()
{
    const auto* const toInstall = FirstStartDraft::programToInstall(_offer);
    std::string text;
    if (platform::systemHasBackupProgram())
        text = localizedString("The system backs up with its own program. Where the backups go is chosen in the "
                               "system's settings, and files are restored with that program too.");
    else if (!program())
        text = stateWithoutProgram(toInstall);
    else if (program()->fields.empty())
        text = filled(localizedString("What is backed up and where to is set in %@ itself."), program()->name);
    _outlets->stateLabel->setStringValue(text);
    _outlets->installCommandLabel->setStringValue(toInstall ? toInstall->install : std::string());
}

void BRVFirstStartController::updateWhen()
{
    const bool isDaily = _draft.when == FirstStartDraft::EveryDay;
    _outlets->timeLabel->setHidden(!isDaily);
    _outlets->timePicker->setHidden(!isDaily);
    _outlets->whenNoteLabel->setStringValue(
        localizedString(isDaily ? "If the computer is off at that time, the backup is made as soon as possible."
                                : "Backups are made whenever the computer is inactive, so that they stay out of your "
                                  "way while you work."));
}

void BRVFirstStartController::updateRows()
{
    ZRKStackView::Views rows{_outlets->introductionRow};
    const bool isSystems = platform::systemHasBackupProgram();
    const auto append = [&](const char* kind) {
        for (const auto& entry : entries()) {
            if (std::string_view(entry.kind) == kind && program() && program()->fieldOfKind(kind) && !isSystems)
                rows.push_back(entry.row);
        }
    };
    append(BackupFieldKind::Folders);
    if (program() && !isSystems)
        rows.push_back(_outlets->programRow);
    if (!_outlets->stateLabel->stringValue().empty())
        rows.push_back(_outlets->stateRow);
    if (!program() && !isSystems)
        rows.push_back(_outlets->installRow);
    append(BackupFieldKind::Destination);
    if (rows.back() == _outlets->destinationRow)
        rows.push_back(_outlets->destinationNoteRow);
    append(BackupFieldKind::SecretFile);
    rows.push_back(_outlets->whenRow);
    rows.push_back(_outlets->whenNoteRow);
    if (!_fault.empty())
        rows.push_back(_outlets->faultRow);
    if (rows != _stackView->views())
        _stackView->setViews(std::move(rows));
}
