#include "activity/BRVActivityController.h"

#include "activity/model/ActivityWords.h"
#include "activity/model/SchedulePreview.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/ui/Alert.h"
#include "platform/ui/WeakAction.h"
#include "platform/UserDefaults.h"
#include "protocol/BackupStatus.h"
#include "protocol/Schedule.h"
#include "protocol/SessionAgent.h"

#include <chrono>
#include <utility>

using namespace platform::ui;
using platform::localizedString;

namespace {

constexpr const char* whenColumn = "When";
constexpr int editedItem = 1; // of the pop-up

scheduling::Now now()
{
    const auto clocks = platform::readClocks();
    const auto seconds = [](std::chrono::nanoseconds time) {
        return static_cast<std::int64_t>(std::chrono::floor<std::chrono::seconds>(time).count());
    };
    return {seconds(clocks.sinceEpoch), seconds(clocks.sinceBoot)};
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const auto& line : lines)
        text += (text.empty() ? "" : "\n") + line;
    return text;
}

} // namespace

std::shared_ptr<BRVActivityController> BRVActivityController::create(ScheduleSource schedules)
{
    return std::shared_ptr<BRVActivityController>(new BRVActivityController(std::move(schedules)));
}

void BRVActivityController::showWindow()
{
    if (!_interface)
        loadWindow();
    _interface->window()->makeKeyAndOrderFront();
    refresh();
}

void BRVActivityController::loadWindow()
{
    _interface = Interface::load(windowNibName);
    _stateTextField = _interface->outlet<TextField>("activityStateLabel");
    _lastBackupTextField = _interface->outlet<TextField>("activityLastBackupLabel");
    _notesTextField = _interface->outlet<TextField>("activityNotesLabel");
    _editsTextField = _interface->outlet<TextField>("activityEditsLabel");
    _spinningIndicator = _interface->outlet<ProgressIndicator>("activitySpinner");
    _backUpNowButton = _interface->outlet<Button>("backUpNowButton");
    _schedulePopup = _interface->outlet<PopUpButton>("activitySchedulePopUp");
    _tableView = _interface->outlet<TableView>("momentsTable");
    _journalTextView = _interface->outlet<TextView>("journalTextView");
    _notifiesCheckBox = _interface->outlet<CheckBox>("notifiesCheckBox");

    const auto action = weakActions(weak_from_this());
    using Self = BRVActivityController;
    _tableView->setDataSource(weak_from_this());
    _backUpNowButton->setAction(action([](Self& self) { self.backUpNow(); }));
    _notifiesCheckBox->setOn(platform::userDefault(BRVNotifiesOfBackups).value_or(true).boolValue());
    _notifiesCheckBox->setAction(action([](Self& self) { self.changeNotifies(); }));
    _schedulePopup->setAction(action([](Self& self) { self.update(); }));
    _statusObserver.emplace(BRVDidChangeBackupStatus, action([](Self& self) {
                                if (self.isVisible())
                                    self.refresh();
                            }));
    _midnight = platform::ClockTimer::create(platform::ClockTimer::Clock::SinceEpoch, platform::Queue::main(),
                                             action([](Self& self) { self.update(); }));
    _clock =
        platform::ClockWatch::create(platform::Queue::main(), [weak = weak_from_this()](platform::ClockEvent event) {
            const auto self = weak.lock();
            if (self && event == platform::ClockEvent::ZoneChanged && self->isVisible())
                self->refresh();
        });
    update();
    _interface->window()->layoutIfNeeded();
    _interface->window()->center();
    _interface->window()->setFrameAutosaveName("Activity");
}

void BRVActivityController::changeNotifies()
{
    if (!platform::setUserDefault(BRVNotifiesOfBackups, _notifiesCheckBox->isOn()))
        _notifiesCheckBox->setOn(!_notifiesCheckBox->isOn());
}

bool BRVActivityController::isVisible() const
{
    return _interface && _interface->window()->isVisible();
}

void BRVActivityController::schedulesDidChange()
{
    if (isVisible())
        update();
}

// Asking the helper

void BRVActivityController::refresh()
{
    if (_isAsking)
        _asksAgain = true;
    else
        ask();
}

void BRVActivityController::ask()
{
    _isAsking = true;
    _asksAgain = false;
    updateProgress();
    BRVHelperMessager::sharedMessager()->getStatus(platform::Queue::main(), [weak = weak_from_this()](auto reply) {
        if (const auto self = weak.lock())
            self->finishAsking(std::move(reply));
    });
}

void BRVActivityController::finishAsking(platform::Result<platform::Dictionary> reply)
{
    _isAsking = false;
    _status = reply ? platform::Result<BackupStatus>(BackupStatus::fromReply(*reply))
                    : std::unexpected(std::move(reply.error()));
    update();
    if (_asksAgain)
        ask();
}

void BRVActivityController::backUpNow()
{
    if (_isStarting)
        return;
    _isStarting = true;
    updateProgress();
    BRVHelperMessager::sharedMessager()->startBackup(platform::Queue::main(), [weak = weak_from_this()](auto reply) {
        if (const auto self = weak.lock())
            self->finishStarting(reply);
    });
}

void BRVActivityController::finishStarting(const platform::Result<platform::Dictionary>& reply)
{
    _isStarting = false;
    updateProgress();
    if (!reply && !userCanceledAuthentication(reply.error()))
        presentFailureToStart(reply.error());
    refresh();
}

void BRVActivityController::presentFailureToStart(const platform::Error& error)
{
    Alert alert;
    alert.setMessageText(localizedString("The backup could not be started."));
    alert.setInformativeText(ActivityWords::sentenceForFailureToStart(error));
    alert.addButton(localizedString("OK"));
    alert.beginSheet(_interface->window(), nullptr);
}

// Showing

void BRVActivityController::update()
{
    const bool isKnown = _status && *_status;
    MomentText moments(isKnown ? (*_status)->zone : platform::timeZoneName(), now().clock);
    const auto schedules = _schedules();
    updateStatus(moments, schedules);
    updateMoments(moments, schedules);
    updateJournal(moments);
    updateProgress();
    _midnight->set(isVisible() ? std::optional(std::chrono::seconds(moments.midnight())) : std::nullopt);
}

void BRVActivityController::updateProgress()
{
    if (_isAsking || _isStarting)
        _spinningIndicator->startAnimation();
    else
        _spinningIndicator->stopAnimation();
    const bool isKnown = _status && *_status;
    _backUpNowButton->setEnabled(isKnown && !(*_status)->runs() && !_isStarting);
}

void BRVActivityController::updateStatus(MomentText& moments, const Schedules& schedules)
{
    if (_status && *_status) {
        const BackupStatus& status = **_status;
        _stateTextField->setStringValue(ActivityWords::stateSentence(status, schedules.applied, moments));
        setOrHide(*_lastBackupTextField, ActivityWords::lastBackupSentence(status, moments));
        setOrHide(*_notesTextField, joined(ActivityWords::notes(status, schedules.applied, moments)));
        return;
    }
    _stateTextField->setStringValue(_status ? ActivityWords::sentenceForFailureToAsk(_status->error())
                                            : localizedString("Asking the background scheduler…"));
    setOrHide(*_lastBackupTextField, "");
    setOrHide(*_notesTextField, "");
}

void BRVActivityController::updateMoments(MomentText& moments, const Schedules& schedules)
{
    const BackupStatus* const status = _status && *_status ? &**_status : nullptr;
    const bool hasEdits = status && schedules.applied && !meanTheSame(*schedules.applied, schedules.edited);
    if (hasEdits != std::exchange(_hasEdits, hasEdits))
        _schedulePopup->selectItemAtIndex(hasEdits ? editedItem : 0);
    _schedulePopup->setHidden(!hasEdits);
    const auto preview =
        hasEdits ? std::optional(previewOf(schedules.edited, *schedules.applied, *status, now())) : std::nullopt;
    setOrHide(*_editsTextField, preview ? joined(ActivityWords::notesOnEdits(*preview)) : "");

    const auto placeholder = [](const std::optional<ScheduleSettings>& record) {
        return record ? ActivityWords::noMoments(*record) : std::string();
    };
    if (preview && _schedulePopup->indexOfSelectedItem() == editedItem) {
        showMoments(preview->upcoming, moments, placeholder(schedules.edited));
        return;
    }
    // The helper tells the moments of a schedule that is off too.
    const bool isOff = schedules.applied && !Schedule::fromRecord(*schedules.applied).schedulesBackups();
    showMoments(status && !isOff ? status->upcoming : std::vector<scheduling::Upcoming>(), moments,
                status ? placeholder(schedules.applied) : "");
}

void BRVActivityController::showMoments(const std::vector<scheduling::Upcoming>& upcoming, MomentText& moments,
                                        const std::string& placeholder)
{
    std::vector<Row> rows;
    rows.reserve(upcoming.size());
    for (const auto& moment : upcoming)
        rows.push_back({moments.text(moment.at), ActivityWords::marks(moment)});
    _tableView->setPlaceholder(placeholder);
    if (rows == _rows)
        return;
    _rows = std::move(rows);
    _tableView->reloadData();
}

void BRVActivityController::updateJournal(MomentText& moments)
{
    const auto text = _status && *_status ? journalText((*_status)->journal, moments) : std::string();
    if (_journalTextView->textStorage()->string() == text)
        return; // what is selected in it stays so
    auto styled = std::make_shared<platform::StyledText>();
    styled->appendString(text, {.font = {}, .foreground = platform::NamedColor::Text});
    _journalTextView->setTextStorage(prepareText(std::move(styled)));
}

void BRVActivityController::setOrHide(TextField& field, const std::string& text)
{
    field.setStringValue(text);
    field.setHidden(text.empty());
}

std::size_t BRVActivityController::numberOfRowsInTableView(const TableView&)
{
    return _rows.size();
}

TableCellView BRVActivityController::tableView(const TableView& table, const std::string& columnIdentifier,
                                               std::size_t row)
{
    auto cell = table.makeView(columnIdentifier);
    const auto& shown = _rows.at(row);
    cell.stringValue = columnIdentifier == whenColumn ? shown.when : shown.note;
    return cell;
}
