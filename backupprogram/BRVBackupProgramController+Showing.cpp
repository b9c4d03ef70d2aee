#include "backupprogram/BRVBackupProgramController.h"
#include "backupprogram/ChoiceWords.h"
#include "backupprogram/PopUpTitles.h"
#include "platform/BackupFacility.h"
#include "platform/Localization.h"
#include "protocol/BackupProgram.h"

#include <algorithm>

using namespace platform::ui;
using platform::localizedString;

namespace {

// What to install where nothing is; null when something is there.
const OfferedProgram* suggestedProgram(const ProgramOffer& offer)
{
    const auto found = std::ranges::find_if(offer.programs, [](const auto& each) { return !each.install.empty(); });
    return offer.hasInstalledPackage() || found == offer.programs.end() ? nullptr : &*found;
}

} // namespace

void BRVBackupProgramController::update()
{
    if (!_outlets)
        return;
    if (!hasEdits())
        _unkeptEdits.reset();
    else if (!_unkeptEdits)
        _unkeptEdits.emplace();
    updatePrograms();
    updateState();
    updateFields();
    updateRestore();
    _outlets->programFaultLabel->setStringValue(_fault);
    updateButtons();
    updateStackView();
}

void BRVBackupProgramController::updatePrograms()
{
    std::vector<std::string> titles{localizedString("None")};
    int selected = 0;
    if (_offer) {
        for (const auto& each : _offer->programs) {
            if (each.identifier == _history.draft().program)
                selected = static_cast<int>(titles.size());
            titles.push_back(ChoiceWords::title(each));
        }
    }
    showTitles(*_outlets->programPopUp, titles, selected);
    _outlets->programPopUp->setEnabled(_offer.has_value());
}

void BRVBackupProgramController::updateState()
{
    const auto* const selected = program();
    const auto* const suggested = _offer && !selected ? suggestedProgram(*_offer) : nullptr;
    std::string text;
    if (platform::systemHasBackupProgram())
        text = localizedString("The system backs up with its own program. Where the backups go is chosen in the "
                               "system's settings, and files are restored with that program too.");
    else if (!_unavailable.empty())
        text = _unavailable;
    else if (!_offer)
        text = localizedString("Looking for backup programs…");
    else
        text = selected ? ChoiceWords::state(*selected) : ChoiceWords::stateOfNone(suggested);
    _outlets->programStateLabel->setStringValue(text);
    const auto* const missing = selected && !selected->isInstalled ? selected : suggested;
    _outlets->installCommandLabel->setStringValue(missing ? missing->install : std::string());
}

// What the user types is there already, and its caret stays where it is.
void BRVBackupProgramController::updateFields()
{
    for (const auto& entry : entries()) {
        const auto text = _history.draft().text(keyOfKind(entry.kind));
        if (entry.field->stringValue() != text)
            entry.field->setStringValue(text);
    }
    _outlets->foldersTable->setPlaceholder(localizedString("Nothing is backed up yet."));
    _outlets->patternsTable->setPlaceholder(localizedString("Nothing is left out."));
    for (const auto& list : lists()) {
        list.table->reloadData();
        const auto rows = list.table->numberOfRows();
        if (rows > 0 && list.table->selectedRow() < 0)
            list.table->selectRow(0);
        list.removeButton->setEnabled(rows > 0);
    }
    _outlets->preventSleepCheckBox->setOn(_history.draft().preventsSleep);
}

void BRVBackupProgramController::updateRestore()
{
    const auto* const selected = program();
    if (!selected)
        return;
    const auto& fields = _history.draft().fields;
    const auto place = selected->place.empty() ? std::string() : localizedString(selected->place);
    _outlets->backupPlaceLabel->setStringValue(withFields(place, fields));
    _outlets->restoreCommandLabel->setStringValue(commandWithFields(selected->restore, fields));
}

void BRVBackupProgramController::updateButtons()
{
    const auto* const selected = program();
    const bool isSame = _offer && _history.draft().program == ProgramDraft::of(_offer->chosen).program;
    const bool hasTyped = _outlets->patternField->length() > 0;
    const bool isChosen = isSame && selected && selected->isReady() && !hasEdits() && !hasTyped;
    const bool canBeChosen = _history.draft().program.empty() || (selected && selected->isReady());
    auto& choose = *_outlets->chooseProgramButton;
    choose.setTitle(localizedString(isSame ? "Save" : "Choose"));
    choose.setEnabled(_offer && !_isChoosing && canBeChosen && (hasEdits() || hasTyped));
    _outlets->testProgramButton->setEnabled(isChosen && !_isChoosing && !_test);
    _outlets->undoProgramButton->setEnabled(_history.canUndo() && !_isChoosing);
    _outlets->addPatternButton->setEnabled(hasTyped);
    for (const auto& button : {_outlets->chooseProgramButton, _outlets->testProgramButton, _outlets->undoProgramButton})
        button->setHidden(platform::systemHasBackupProgram());
    const bool needsSaving = !_test && _testResult.empty() && hasEdits() && canBeChosen;
    _outlets->testResultLabel->setStringValue(
        needsSaving ? localizedString("These changes are not saved yet. What is saved can be tested.") : _testResult);
}

// The fault stands below the field that it is about, or below all of them.
void BRVBackupProgramController::appendFieldRows(ZRKStackView::Views& rows) const
{
    bool hasTold = _fault.empty();
    const auto append = [&](const std::shared_ptr<View>& row, const std::vector<std::string>& keys) {
        rows.push_back(row);
        if (!hasTold && std::ranges::find(keys, _faultyKey) != keys.end()) {
            rows.push_back(_outlets->programFaultRow);
            hasTold = true;
        }
    };
    const auto folders = keyOfKind(BackupFieldKind::Folders);
    const auto patterns = keyOfKind(BackupFieldKind::Patterns);
    _outlets->patternsColumn->setHidden(patterns.empty());
    if (!folders.empty())
        append(_outlets->listsRow, {folders, patterns});
    for (const auto& entry : entries()) {
        if (const auto key = keyOfKind(entry.kind); !key.empty())
            append(entry.row, {key});
    }
    if (!hasTold)
        rows.push_back(_outlets->programFaultRow);
}

void BRVBackupProgramController::updateStackView()
{
    const auto* const selected = program();
    ZRKStackView::Views rows;
    if (_offer && _unavailable.empty())
        rows.push_back(_outlets->programRow);
    rows.push_back(_outlets->programStateRow);
    const bool isLacking = !_unavailable.empty() || (selected && !selected->isReady())
        || !_outlets->installCommandLabel->stringValue().empty();
    if (isLacking && !platform::systemHasBackupProgram())
        rows.push_back(_outlets->installRow);
    if (_offer && _unavailable.empty()) {
        if (selected && selected->isInstalled)
            appendFieldRows(rows);
        else if (!_fault.empty())
            rows.push_back(_outlets->programFaultRow);
        if (selected && selected->isInstalled) {
            rows.push_back(_outlets->preventSleepCheckBox);
            rows.push_back(_outlets->restoreColumn);
        }
    }
    if (!_outlets->testResultLabel->stringValue().empty())
        rows.push_back(_outlets->testResultRow);
    if (rows != _stackView->views())
        _stackView->setViews(std::move(rows));
}
