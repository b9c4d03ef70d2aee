#include "firststart/BRVFirstStartController.h"

#include "backupprogram/ChoiceWords.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/BackupFacility.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/ui/OpenPanel.h"
#include "platform/ui/WeakAction.h"
#include "platform/Volumes.h"
#include "protocol/BackupProgram.h"
#include "schedule/BRVDatePicker.h"
#include "schedule/model/ApplyAlert.h"

#include <utility>

using namespace platform::ui;
using platform::Dictionary;
using platform::localizedString;
using platform::Result;

namespace {

std::vector<std::string> mountedDisks()
{
    std::vector<std::string> disks;
    for (auto& each : platform::mountedFileSystems(platform::numberOfMountedFileSystems())) {
        if (each.flags & platform::MountedFileSystem::Local)
            disks.push_back(std::move(each.path));
    }
    return disks;
}

} // namespace

std::shared_ptr<BRVFirstStartController> BRVFirstStartController::create(ScheduleSettings current,
                                                                         const EditorCapabilities& capabilities,
                                                                         ProgramOffer offer, EndHandler handler)
{
    return std::shared_ptr<BRVFirstStartController>(
        new BRVFirstStartController(std::move(current), capabilities, std::move(offer), std::move(handler)));
}

BRVFirstStartController::BRVFirstStartController(ScheduleSettings current, const EditorCapabilities& capabilities,
                                                 ProgramOffer offer, EndHandler handler)
    : _current(std::move(current)),
      _capabilities(capabilities),
      _offer(std::move(offer)),
      _draft(FirstStartDraft::suggested(_offer, platform::homeDirectory(), mountedDisks())),
      _handler(std::move(handler))
{
}

std::string BRVFirstStartController::windowNibName() const
{
    return "BRVFirstStartController";
}

void BRVFirstStartController::showWindow()
{
    if (!_interface) {
        loadWindow();
        update();
        _outlets->window->layoutIfNeeded();
        _outlets->window->center();
    }
    _outlets->window->makeKeyAndOrderFront();
}

bool BRVFirstStartController::isVisible() const
{
    return _outlets && _outlets->window->isVisible();
}

void BRVFirstStartController::loadWindow()
{
    _interface = Interface::load(windowNibName());
    _outlets.emplace(*_interface);
    _stackView = ZRKStackView::create(_outlets->stackView);
    _stackView->setOrientation(ZRKStackView::Vertical);
    _outlets->window->setAutorecalculatesKeyViewLoop(true);
    _outlets->faultLabel->setTextColor(platform::Color(platform::NamedColor::SystemRed));
    BRVDatePicker::correctLayout(*_outlets->timePicker);
    for (const auto& entry : entries()) {
        entry.field->setStringValue(_draft.*FirstStartDraft::answerOfKind(entry.kind));
        entry.field->setDelegate(weak_from_this());
    }
    _outlets->whenPopUp->selectItemAtIndex(_draft.when);
    _outlets->timePicker->setTimeOfDay(_draft.time);
    connectActions();
}

void BRVFirstStartController::connectActions()
{
    const auto action = weakActions(weak_from_this());
    using Self = BRVFirstStartController;
    const auto all = entries();
    for (std::size_t index = 0; index < all.size(); ++index)
        all[index].button->setAction(action([index](Self& self) { self.browse(self.entries()[index]); }));
    _outlets->programPopUp->setAction(action([](Self& self) { self.selectProgram(); }));
    _outlets->lookAgainButton->setAction(action([](Self& self) { self.lookAgain(); }));
    _outlets->whenPopUp->setAction(action([](Self& self) { self.edit(); }));
    _outlets->timePicker->setAction(action([](Self& self) { self.edit(); }));
    _outlets->allSettingsButton->setAction(action([](Self& self) { self.showAllSettings(); }));
    _outlets->notNowButton->setAction(action([](Self& self) { self._outlets->window->close(); }));
    _outlets->startButton->setAction(action([](Self& self) { self.start(); }));
    _outlets->window->setCloseHandler(action([](Self& self) { self.windowWillClose(); }));
}

std::vector<BRVFirstStartController::Entry> BRVFirstStartController::entries() const
{
    return {
        {BackupFieldKind::Folders, _outlets->folderRow, _outlets->folderField, _outlets->folderButton},
        {BackupFieldKind::Destination, _outlets->destinationRow, _outlets->destinationField,
         _outlets->destinationButton},
        {BackupFieldKind::SecretFile, _outlets->secretFileRow, _outlets->secretFileField, _outlets->secretFileButton}};
}

const OfferedProgram* BRVFirstStartController::program() const
{
    return _offer.program(_draft.program);
}

bool BRVFirstStartController::canStart() const
{
    return !_isSending && (program() || platform::systemHasBackupProgram());
}

void BRVFirstStartController::takeAnswers()
{
    for (const auto& entry : entries())
        _draft.*FirstStartDraft::answerOfKind(entry.kind) = entry.field->stringValue();
    _draft.when = _outlets->whenPopUp->indexOfSelectedItem();
    _draft.time = _outlets->timePicker->timeOfDay();
}

void BRVFirstStartController::edit()
{
    takeAnswers();
    _fault.clear();
    update();
}

void BRVFirstStartController::selectProgram()
{
    const auto programs = FirstStartDraft::programs(_offer);
    const auto index = static_cast<std::size_t>(_outlets->programPopUp->indexOfSelectedItem());
    if (index < programs.size())
        _draft.program = programs[index]->identifier;
    edit();
}

void BRVFirstStartController::browse(const Entry& entry)
{
    const bool isFile = std::string_view(entry.kind) == BackupFieldKind::SecretFile;
    OpenPanel panel(isFile ? OpenPanel::Kind::File : OpenPanel::Kind::Folder);
    panel.setDirectory(entry.field->stringValue());
    panel.beginSheet(_outlets->window,
                     [weak = weak_from_this(), field = entry.field](const std::optional<std::string>& path) {
                         const auto self = weak.lock();
                         if (!self || !path)
                             return;
                         field->setStringValue(*path);
                         self->edit();
                     });
}

void BRVFirstStartController::lookAgain()
{
    BRVHelperMessager::sharedMessager()->getBackupProgram(platform::Queue::main(),
                                                          [weak = weak_from_this()](const auto& reply) {
                                                              if (const auto self = weak.lock())
                                                                  self->didReceive(reply);
                                                          });
}

void BRVFirstStartController::didReceive(const Result<Dictionary>& reply)
{
    if (reply) {
        _offer = ProgramOffer::inReply(*reply);
        _draft = _draft.with(_offer);
    }
    fail(reply ? std::string() : ChoiceWords::unavailable(reply.error()));
}

void BRVFirstStartController::start()
{
    if (!canStart())
        return;
    takeAnswers();
    _isSending = true;
    _fault.clear();
    update();
    if (platform::systemHasBackupProgram())
        return apply();
    BRVHelperMessager::sharedMessager()->setBackupProgram(
        _draft.programDraft(_offer).choice(_offer), platform::Queue::main(),
        [weak = weak_from_this()](const Result<Dictionary>& reply) {
            const auto self = weak.lock();
            if (self && reply)
                self->apply();
            else if (self)
                self->fail(userCanceledAuthentication(reply.error())
                               ? std::string()
                               : ChoiceWords::fault(reply.error(), self->program()));
        });
}

// After the program, which can be refused for more reasons: when that is refused nothing is written.
void BRVFirstStartController::apply()
{
    const auto settings = _draft.record(_current, _capabilities);
    BRVHelperMessager::sharedMessager()->sendMessage(
        BRVMessageApplySettings, settings, platform::Queue::main(),
        [weak = weak_from_this(), settings](const BRVHelperMessager::Reply& reply) {
            if (const auto self = weak.lock())
                self->didApply(settings, reply);
        });
}

void BRVFirstStartController::didApply(const ScheduleSettings& settings, const Result<platform::PropertyList>& reply)
{
    if (reply) {
        _isSending = false;
        _end.applied = settings;
        leave();
        return;
    }
    const bool isCanceled = userCanceledAuthentication(reply.error());
    const auto what = platform::systemHasBackupProgram()
        ? localizedString(textsOf(alertAfterFailingToApply(false)).title)
        : localizedString("The backup program is chosen, but the schedule is not applied yet.");
    const auto why = ZRKError::localizedDescriptionForError(reply.error());
    if (isCanceled)
        fail(platform::systemHasBackupProgram() ? std::string() : what);
    else
        fail(platform::formatString(localizedString("%@ %@"), {what, why}).value_or(what));
}

void BRVFirstStartController::fail(const std::string& fault)
{
    _isSending = false;
    _fault = fault;
    update();
    if (!fault.empty() && !isVisible())
        showWindow();
}

void BRVFirstStartController::showAllSettings()
{
    takeAnswers();
    _end.edits = _draft.record(_current, _capabilities);
    _end.program = _draft.programDraft(_offer);
    leave();
}

void BRVFirstStartController::leave()
{
    if (isVisible())
        _outlets->window->close();
    else
        windowWillClose(); // it did while the helper was asked
}

// What was sent is told of once more when it is applied.
void BRVFirstStartController::windowWillClose()
{
    const auto handler = _isSending ? _handler : std::exchange(_handler, nullptr);
    if (handler)
        handler(_end);
}

bool BRVFirstStartController::shouldChangeText(TextField&, TextRange, std::string_view)
{
    return true;
}

void BRVFirstStartController::controlTextDidChange(TextField&)
{
    edit();
}

bool BRVFirstStartController::doCommand(TextField&, TextCommand)
{
    return false;
}
