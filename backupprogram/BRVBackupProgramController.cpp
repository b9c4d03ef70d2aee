#include "backupprogram/BRVBackupProgramController.h"

#include "backupprogram/ChoiceWords.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/BackupFacility.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/ui/OpenPanel.h"
#include "platform/ui/WeakAction.h"
#include "platform/UserDefaults.h"
#include "protocol/BackupProgram.h"
#include "protocol/BackupStatus.h"

#include <algorithm>
#include <cstddef>
#include <utility>

using namespace platform::ui;
using platform::Dictionary;
using platform::localizedString;
using platform::Result;

namespace {

// The edits that were not sent when the application ended, by BackupProgramKey.
constexpr const char* keptEditsKey = "BRVBackupProgramEdits";

} // namespace

std::shared_ptr<BRVBackupProgramController> BRVBackupProgramController::create()
{
    return std::shared_ptr<BRVBackupProgramController>(new BRVBackupProgramController);
}

std::string BRVBackupProgramController::windowNibName() const
{
    return "BRVBackupProgramController";
}

void BRVBackupProgramController::showWindow()
{
    const bool isFirst = !_interface;
    if (isFirst)
        loadWindow();
    update();
    if (isFirst) {
        _outlets->window->layoutIfNeeded();
        _outlets->window->center();
    }
    _outlets->window->makeKeyAndOrderFront();
    if (!platform::systemHasBackupProgram())
        reloadPrograms();
}

void BRVBackupProgramController::loadWindow()
{
    _interface = Interface::load(windowNibName());
    _outlets.emplace(*_interface);
    _stackView = ZRKStackView::create(_outlets->stackView);
    _stackView->setOrientation(ZRKStackView::Vertical);
    _outlets->window->setAutorecalculatesKeyViewLoop(true);
    _outlets->programFaultLabel->setTextColor(platform::Color(platform::NamedColor::SystemRed));
    for (const auto& list : lists())
        list.table->setDataSource(weak_from_this());
    for (const auto& entry : entries())
        entry.field->setDelegate(weak_from_this());
    _outlets->patternField->setDelegate(weak_from_this());
    connectActions();
}

void BRVBackupProgramController::connectActions()
{
    const auto action = weakActions(weak_from_this());
    using Self = BRVBackupProgramController;
    _outlets->programPopUp->setAction(action([](Self& self) { self.selectProgram(); }));
    _outlets->lookAgainButton->setAction(action([](Self& self) { self.reloadPrograms(); }));
    _outlets->addFolderButton->setAction(action([](Self& self) { self.addFolder(); }));
    _outlets->addPatternButton->setAction(action([](Self& self) { self.addPattern(); }));
    for (std::size_t index = 0; index < lists().size(); ++index)
        lists()[index].removeButton->setAction(action([index](Self& self) { self.removeText(self.lists()[index]); }));
    _outlets->destinationButton->setAction(action([](Self& self) { self.browse(BackupFieldKind::Destination); }));
    _outlets->secretFileButton->setAction(action([](Self& self) { self.browse(BackupFieldKind::SecretFile); }));
    _outlets->preventSleepCheckBox->setAction(action([](Self& self) { self.changePreventSleep(); }));
    _outlets->testProgramButton->setAction(action([](Self& self) { self.test(); }));
    _outlets->undoProgramButton->setAction(action([](Self& self) { self.undo(); }));
    _outlets->chooseProgramButton->setAction(action([](Self& self) { self.choose(); }));
}

std::vector<BRVBackupProgramController::Entry> BRVBackupProgramController::entries() const
{
    return {{BackupFieldKind::Destination, _outlets->destinationRow, _outlets->destinationField},
            {BackupFieldKind::SecretFile, _outlets->secretFileRow, _outlets->secretFileField},
            {BackupFieldKind::Word, _outlets->wordRow, _outlets->wordField},
            {BackupFieldKind::Unit, _outlets->unitRow, _outlets->unitField}};
}

std::vector<BRVBackupProgramController::List> BRVBackupProgramController::lists() const
{
    return {{BackupFieldKind::Folders, _outlets->foldersTable, _outlets->removeFolderButton},
            {BackupFieldKind::Patterns, _outlets->patternsTable, _outlets->removePatternButton}};
}

void BRVBackupProgramController::reloadPrograms()
{
    BRVHelperMessager::sharedMessager()->getBackupProgram(platform::Queue::main(),
                                                          [weak = weak_from_this()](const auto& reply) {
                                                              if (const auto self = weak.lock())
                                                                  self->didReceive(reply);
                                                          });
}

void BRVBackupProgramController::didReceive(const Result<Dictionary>& reply)
{
    _unavailable = reply ? std::string() : ChoiceWords::unavailable(reply.error());
    if (reply)
        takeOffer(ProgramOffer::inReply(*reply));
    update();
}

// What is being edited stays.
void BRVBackupProgramController::takeOffer(ProgramOffer offer)
{
    const bool isFirst = !_offer;
    const bool keepsEdits = hasEdits();
    _offer = std::move(offer);
    if (!keepsEdits)
        _history = DraftHistory(ProgramDraft::of(_offer->chosen));
    if (isFirst)
        takeKeptEdits();
    if (const auto begun = std::exchange(_begunEdits, std::nullopt))
        _history.edit(*begun);
}

void BRVBackupProgramController::takeKeptEdits()
{
    const auto kept = platform::userDefault(keptEditsKey);
    if (!kept || !kept->dictionary() || kept->dictionary()->empty())
        return;
    _history.edit(ProgramDraft::of(*kept->dictionary()));
    (void)platform::setUserDefault(keptEditsKey, Dictionary());
}

void BRVBackupProgramController::keepEdits() const
{
    if (hasEdits())
        (void)platform::setUserDefault(keptEditsKey, _history.draft().dictionary());
}

const OfferedProgram* BRVBackupProgramController::program() const
{
    return _offer ? _offer->program(_history.draft().program) : nullptr;
}

std::string BRVBackupProgramController::keyOfKind(std::string_view kind) const
{
    const auto* const selected = program();
    const auto* const field = selected ? selected->fieldOfKind(kind) : nullptr;
    return field ? field->key : std::string();
}

bool BRVBackupProgramController::hasEdits() const
{
    return _offer && _history.draft().choice(*_offer) != ProgramDraft::of(_offer->chosen).choice(*_offer);
}

// Of the same subject as the edit before, it is one with it.
void BRVBackupProgramController::edit(ProgramDraft changed, const std::string& subject)
{
    _history.edit(std::move(changed), subject);
    _fault.clear();
    if (!_test)
        _testResult.clear();
    update();
}

void BRVBackupProgramController::selectProgram()
{
    const int index = _outlets->programPopUp->indexOfSelectedItem() - 1;
    auto draft = _history.draft();
    draft.program = _offer && index >= 0 && static_cast<std::size_t>(index) < _offer->programs.size()
        ? _offer->programs[static_cast<std::size_t>(index)].identifier
        : std::string();
    edit(std::move(draft), {});
}

void BRVBackupProgramController::changePreventSleep()
{
    auto draft = _history.draft();
    draft.preventsSleep = _outlets->preventSleepCheckBox->isOn();
    edit(std::move(draft), {});
}

void BRVBackupProgramController::browse(const char* kind)
{
    const bool isFolder = std::string_view(kind) == BackupFieldKind::Destination;
    OpenPanel panel(isFolder ? OpenPanel::Kind::Folder : OpenPanel::Kind::File);
    panel.setDirectory(_history.draft().text(keyOfKind(kind)));
    panel.beginSheet(_outlets->window, [weak = weak_from_this(), kind](const std::optional<std::string>& path) {
        const auto self = weak.lock();
        const auto key = self && path ? self->keyOfKind(kind) : std::string();
        if (key.empty())
            return;
        auto draft = self->_history.draft();
        draft.setText(key, *path);
        self->edit(std::move(draft), {});
    });
}

void BRVBackupProgramController::addFolder()
{
    OpenPanel panel(OpenPanel::Kind::Folder);
    panel.setDirectory(platform::homeDirectory());
    panel.beginSheet(_outlets->window, [weak = weak_from_this()](const std::optional<std::string>& path) {
        const auto self = weak.lock();
        if (self && path)
            self->addText(BackupFieldKind::Folders, *path);
    });
}

void BRVBackupProgramController::addPattern()
{
    const auto pattern = _outlets->patternField->stringValue();
    _outlets->patternField->setStringValue("");
    if (!pattern.empty())
        addText(BackupFieldKind::Patterns, pattern);
}

void BRVBackupProgramController::addText(const char* kind, const std::string& text)
{
    const auto key = keyOfKind(kind);
    auto draft = _history.draft();
    auto texts = draft.texts(key);
    const auto place = std::ranges::find(texts, text) - texts.begin();
    if (key.empty())
        return;
    if (static_cast<std::size_t>(place) == texts.size())
        texts.push_back(text);
    draft.setTexts(key, texts);
    edit(std::move(draft), {});
    for (const auto& list : lists()) {
        if (std::string_view(list.kind) == kind)
            list.table->selectRow(static_cast<int>(place));
    }
}

void BRVBackupProgramController::removeText(const List& list)
{
    const auto key = keyOfKind(list.kind);
    auto draft = _history.draft();
    auto texts = draft.texts(key);
    const int row = list.table->selectedRow();
    if (row < 0 || static_cast<std::size_t>(row) >= texts.size())
        return;
    texts.erase(texts.begin() + row);
    draft.setTexts(key, texts);
    edit(std::move(draft), {});
    list.table->selectRow(std::min(row, static_cast<int>(texts.size()) - 1));
}

void BRVBackupProgramController::undo()
{
    _history.undo();
    _fault.clear();
    update();
}

void BRVBackupProgramController::choose()
{
    addPattern(); // one that was typed belongs to the choice
    if (!_offer || _isChoosing)
        return;
    _isChoosing = true;
    _fault.clear();
    updateButtons();
    const auto choice = _history.draft().choice(*_offer);
    BRVHelperMessager::sharedMessager()->setBackupProgram(choice, platform::Queue::main(),
                                                          [weak = weak_from_this(), choice](const auto& reply) {
                                                              if (const auto self = weak.lock())
                                                                  self->didChoose(choice, reply);
                                                          });
}

void BRVBackupProgramController::didChoose(const Dictionary& choice, const Result<Dictionary>& reply)
{
    _isChoosing = false;
    if (reply) {
        _offer->chosen = choice;
        if (!hasEdits()) // since it was sent
            _history = DraftHistory(_history.draft());
    } else if (!userCanceledAuthentication(reply.error())) {
        const auto* const key = reply.error().userInfo.stringForKey("key");
        _fault = ChoiceWords::fault(reply.error(), program());
        _faultyKey = key ? *key : std::string();
    }
    update();
}

void BRVBackupProgramController::test()
{
    if (_test)
        return;
    _test.emplace();
    _testResult = localizedString("A backup is being made. It may take long; you need not wait for it here.");
    _outlets->testProgramSpinner->startAnimation();
    update();
    BRVHelperMessager::sharedMessager()->startBackup(
        platform::Queue::main(), [weak = weak_from_this()](const Result<Dictionary>& reply) {
            const auto self = weak.lock();
            if (self && reply)
                self->followTest();
            else if (self)
                self->endTest(userCanceledAuthentication(reply.error())
                                  ? std::string()
                                  : ZRKError::localizedDescriptionForError(reply.error()));
        });
}

// Asks at once, since a short backup may have ended, and whenever the status changes.
void BRVBackupProgramController::followTest()
{
    const auto ask = [weak = weak_from_this()] {
        BRVHelperMessager::sharedMessager()->getStatus(platform::Queue::main(), [weak](const auto& reply) {
            if (const auto self = weak.lock())
                self->didReceiveStatus(reply);
        });
    };
    _statusObserver.emplace(BRVDidChangeBackupStatus, ask);
    ask();
}

void BRVBackupProgramController::didReceiveStatus(const Result<Dictionary>& reply)
{
    if (!_test)
        return;
    if (!reply)
        return endTest(ZRKError::localizedDescriptionForError(reply.error()));
    if (const auto outcome = _test->outcomeIn(*reply))
        endTest(ChoiceWords::outcome(*outcome));
}

void BRVBackupProgramController::endTest(const std::string& result)
{
    _test.reset();
    _statusObserver.reset();
    _testResult = result;
    _outlets->testProgramSpinner->stopAnimation();
    update();
}

std::size_t BRVBackupProgramController::numberOfRowsInTableView(const TableView& table)
{
    for (const auto& list : lists()) {
        if (list.table.get() == &table)
            return _history.draft().texts(keyOfKind(list.kind)).size();
    }
    return 0;
}

TableCellView BRVBackupProgramController::tableView(const TableView& table, const std::string& columnIdentifier,
                                                    std::size_t row)
{
    auto cell = table.makeView(columnIdentifier);
    for (const auto& list : lists()) {
        const auto texts = _history.draft().texts(keyOfKind(list.kind));
        if (list.table.get() == &table && row < texts.size())
            cell.stringValue = texts[row];
    }
    return cell;
}

bool BRVBackupProgramController::shouldChangeText(TextField&, TextRange, std::string_view)
{
    return true;
}

void BRVBackupProgramController::controlTextDidChange(TextField& field)
{
    for (const auto& entry : entries()) {
        const auto key = keyOfKind(entry.kind);
        if (entry.field.get() != &field || key.empty())
            continue;
        auto draft = _history.draft();
        draft.setText(key, field.stringValue());
        edit(std::move(draft), key);
    }
    updateButtons();
}

bool BRVBackupProgramController::doCommand(TextField& field, TextCommand command)
{
    const bool addsPattern =
        &field == _outlets->patternField.get() && command == TextCommand::InsertNewline && field.length() > 0;
    if (addsPattern)
        addPattern();
    return addsPattern;
}
