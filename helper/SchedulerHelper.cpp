#include "helper/SchedulerHelper.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/ReplyBuilder.h"
#include "helper/SettingsValidator.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/SystemInformation.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/Schedule.h"
#include "protocol/ScheduleSettings.h"
#include "protocol/SnapshotList.h"

#include <algorithm>
#include <cerrno>
#include <future>
#include <optional>
#include <utility>

namespace helper {

using platform::Data;
using platform::Dictionary;
using platform::Error;
using platform::PropertyList;
using platform::Result;
using platform::ServiceDictionary;
using platform::ServicePeer;

namespace {

// The names of lines, which a user has one of in each lane. A sender that is not identified yet has its own.
std::string lineOf(const std::string& who, Service::Lane lane)
{
    return (lane == Service::Lane::Reading ? "reading " : "changing ") + who;
}

std::string nameOf(std::uint32_t user)
{
    return std::to_string(user);
}

ServiceDictionary replyTo(std::int64_t message, const Service::Outcome& outcome)
{
    return outcome ? ReplyBuilder::replyWithResult(message, *outcome) : ReplyBuilder::replyWithError(outcome.error());
}

// What a request asks to be stored, if it is a record without a fault.
template <class FaultIn>
Result<Dictionary> validRecord(const Service::Call& call, FaultIn faultIn)
{
    const auto* record = call.payload ? call.payload->dictionary() : nullptr;
    if (!record)
        return std::unexpected(RequestReader::deserializeError(call.message));
    if (auto fault = faultIn(*record))
        return std::unexpected(fault->error());
    return *record;
}

// The reply to a change: the application only asks that it is not empty.
const Dictionary& changed()
{
    static const Dictionary reply{{PayloadKey::Applied, true}};
    return reply;
}

// The reply when there is no room. Encoded once, since whoever sends too much gets it often.
const ServiceDictionary& busy()
{
    static const auto reply = ReplyBuilder::replyWithError({platform::POSIXErrorDomain, EBUSY, {}, nullptr});
    return reply;
}

} // namespace

std::shared_ptr<SchedulerHelper> SchedulerHelper::create(const HelperOptions& options, const HelperParts& parts,
                                                         Listener& listener, Maintenance::EndHandler endHandler)
{
    return std::shared_ptr<SchedulerHelper>(new SchedulerHelper(options, parts, listener, std::move(endHandler)));
}

SchedulerHelper::SchedulerHelper(const HelperOptions& options, const HelperParts& parts, Listener& listener,
                                 Maintenance::EndHandler endHandler)
    : _listener(listener),
      _turns(Turns::create([&listener](auto task) { listener.async(std::move(task)); })),
      _settings(platform::systemPath("/Library/Preferences/com.zerkolin.brevane.scheduler.plist")),
      _autoUpdates(platform::systemPath("/Library/Preferences/com.zerkolin.brevane.updates.plist")),
      _maintenance(Maintenance::create(options, parts, _peers, std::move(endHandler))),
      _readingQueue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.reading")),
      _changingQueue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.changing")),
      _listingQueue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.listing")),
      _program(parts.programs),
      _localSnapshots(parts.snapshots),
      _enforcer({.statePath = platform::systemPath("/var/db/brevane/state.plist"),
                 .record = *_settings.settings(),
                 .program = _program,
                 .isMaintenanceAtWork = [maintenance = _maintenance] { return maintenance->isAtWork(); },
                 .isUnderWay = _maintenance->backupIsUnderWay()}),
      _snapshots(
          platform::systemPath("/var/db/brevane/snapshots.plist"), [program = _program] { return program->folders(); },
          _localSnapshots),
      _takesUpdates(options.updates.key.has_value()),
      _automaticUpdates(options.updates.interval,
                        [maintenance = _maintenance] { return maintenance->installUpdateUnasked(); })
{
    _maintenance->setChangeHandler([this] { _enforcer.conditionsChanged(); });
    followAutoUpdatesSetting();
    followSnapshotsSetting();
    serveEverything();
    serveEnforcement();
    serveSnapshots();
}

void SchedulerHelper::serve(std::int64_t message, Service service)
{
    _services.insert_or_assign(message, std::move(service));
}

// The helper outlives the services, which only it calls.
void SchedulerHelper::serveEverything()
{
    using Lane = Service::Lane;
    using Call = Service::Call;
    using Completion = Service::Completion;
    const auto ready = [this](std::int64_t message, std::function<ServiceDictionary()> reply) {
        serve(message, {std::move(reply), Lane::Reading, false, {}});
    };
    const auto change = [this](std::int64_t message, Service::Outcome (SchedulerHelper::*make)(const Call&)) {
        serve(message, {{}, Lane::Changing, true, [this, make](const Call& call, const Completion& completion) {
                            completion((this->*make)(call));
                        }});
    };
    const auto maintain = [this](std::int64_t message, Lane lane, auto begin) {
        serve(message, {{}, lane, false, [this, begin](const Call& call, const Completion& completion) {
                            begin(*_maintenance, call, completion);
                        }});
    };
    ready(BRVMessageGetSettings, [this] { return _settings.reply(); });
    ready(BRVMessageGetAutoUpdates, [this] {
        return replyTo(BRVMessageGetAutoUpdates, Dictionary{{PayloadKey::Enabled, _autoUpdates.enabled()}});
    });
    change(BRVMessageApplySettings, &SchedulerHelper::applySettings);
    change(BRVMessageSetAllowWithoutPassword, &SchedulerHelper::setAllowWithoutPassword);
    change(BRVMessageSetAutoUpdates, &SchedulerHelper::setAutoUpdates);
    maintain(BRVMessageCheckForUpdates, Lane::Reading,
             [](Maintenance& work, const Call& call, const Completion& completion) {
                 work.checkForUpdates(call.sender.name, completion);
             });
    maintain(BRVMessageInstallUpdate, Lane::Changing,
             [](Maintenance& work, const Call&, const Completion& completion) { work.installUpdate(completion); });
    maintain(BRVMessageUninstall, Lane::Changing,
             [](Maintenance& work, const Call& call, const Completion& completion) {
                 work.uninstall(call.sender.name, completion);
             });
}

void SchedulerHelper::serveEnforcement()
{
    using Lane = Service::Lane;
    using Call = Service::Call;
    using Completion = Service::Completion;
    serve(BRVMessageGetStatus,
          {{}, Lane::Reading, false, [this](const Call& call, const Completion& completion) {
               _enforcer.status([turn = call.turn, completion](auto outcome) { completion(std::move(outcome)); });
           }});
    serve(BRVMessageStartBackup,
          {{}, Lane::Changing, false, [this](const Call& call, const Completion& completion) {
               _enforcer.startNow([turn = call.turn, completion](auto outcome) { completion(std::move(outcome)); });
           }});
    serve(BRVMessageGetBackupProgram, {{}, Lane::Reading, false, [this](const Call&, const Completion& completion) {
                                           auto reply = _program->reply();
                                           if (!_settings.wasApplied())
                                               reply.set(BackupProgramKey::NeverApplied, true);
                                           completion(std::move(reply));
                                           _enforcer.conditionsChanged(); // one may have been installed
                                       }});
    serve(BRVMessageSetBackupProgram,
          {{}, Lane::Changing, true, [this](const Call& call, const Completion& completion) {
               completion(setBackupProgram(call));
           }});
}

void SchedulerHelper::serveSnapshots()
{
    serve(BRVMessageListSnapshots,
          {{}, Service::Lane::Reading, true, [this](const Service::Call& call, const Service::Completion& completion) {
               const auto* const payload = call.payload ? call.payload->dictionary() : nullptr;
               const auto* const volume = payload ? payload->stringForKey(SnapshotListKey::Volume) : nullptr;
               if (!volume)
                   return completion(std::unexpected(RequestReader::deserializeError(call.message)));
               _listingQueue->async([snapshots = _localSnapshots, volume = *volume, turn = call.turn, completion] {
                   completion(snapshots->list(volume));
               });
           }});
}

void SchedulerHelper::followAutoUpdatesSetting()
{
    _automaticUpdates.setEnabled(_takesUpdates && _autoUpdates.enabled());
}

void SchedulerHelper::followSnapshotsSetting()
{
    _snapshots.setEnabled(Schedule::fromRecord(*_settings.settings()).schedulesSnapshots());
}

void SchedulerHelper::handle(Listener::Request received, Listener::Reply reply)
{
    _peers->add(received.sender);
    Job job{{}, std::move(received.sender), std::move(reply), nullptr, false};
    auto request = RequestReader::requestForMessage(std::move(received.message), received.tooLong);
    if (!request || request->message != BRVMessageGetStatus)
        _peers->setUsesHelper(job.sender);
    if (!request) {
        enqueue(std::move(job), 0, std::move(request.error()));
        return;
    }
    job.request = std::move(*request);
    const auto rights = BRVAuthorizationRightsForMessage(job.request.message);
    job.needsRight = rights && !rights->empty();
    if (const auto found = _services.find(job.request.message); found != _services.end())
        job.service = &found->second;
    if (job.service && job.service->ready && !job.needsRight) {
        if (job.reply)
            job.reply(job.service->ready());
        return;
    }
    if (job.service && !job.needsRight && !job.reply)
        return; // it would change nothing and nobody would hear of it
    std::optional<Error> fault;
    if (!rights || (rights->empty() && !job.service))
        fault = RequestReader::deserializeError(job.request.message);
    else if (job.needsRight && !job.request.auth)
        fault = Error{
            ZRKMessagerErrorDomain, ZRKMessagerErrorMissingAuthorization, {{"message", job.request.message}}, nullptr};
    if (!job.service || !job.service->hasPayload || fault)
        job.request.payload.reset();
    const auto size = job.request.payload ? job.request.payload->size() : 0;
    enqueue(std::move(job), size, std::move(fault));
}

// What is at fault waits for its turn too: by then its sender is known, and its refusals are no faster than others'.
void SchedulerHelper::enqueue(Job made, std::size_t size, std::optional<Error> fault)
{
    const auto peer = _peers->identified(made.sender);
    const auto lane = made.needsRight && !fault ? Service::Lane::Changing : Service::Lane::Reading;
    const auto line = lineOf(peer ? nameOf(peer->user) : made.sender, lane);
    if (!_turns->hasRoom(line, size)) {
        if (made.reply)
            made.reply(busy());
        return;
    }
    auto job = std::make_shared<Job>(std::move(made));
    auto start = [self = weak_from_this(), job, fault = std::move(fault)](const Turns::Turn& turn) {
        const auto helper = self.lock();
        const auto sender = helper ? helper->_peers->identified(job->sender) : std::nullopt;
        if (!sender)
            return; // nobody waits for it any more
        if (fault)
            helper->refuse(*job, *sender, *fault);
        else
            helper->begin(job, turn);
    };
    auto refuse = [job] {
        if (job->reply)
            job->reply(busy());
    };
    _turns->add(line, {job->sender, size, std::move(start), std::move(refuse)}, peer.has_value());
}

void SchedulerHelper::identify(const ServicePeer& peer)
{
    _peers->identify(peer);
    for (auto lane : {Service::Lane::Reading, Service::Lane::Changing})
        _turns->move(lineOf(peer.name, lane), lineOf(nameOf(peer.user), lane));
}

void SchedulerHelper::forget(const std::string& sender)
{
    _peers->remove(sender);
    _turns->drop(sender);
    _maintenance->forget(sender);
    _refusals.report(RefusalLog::Clock::now());
}

void SchedulerHelper::begin(const std::shared_ptr<Job>& job, const Turns::Turn& turn)
{
    const auto sender = _peers->identified(job->sender).value_or(ServicePeer());
    if (!job->needsRight) {
        perform(job, sender, turn);
        return;
    }
    auto ask = [self = weak_from_this(), job](const std::string& right, auto answer) {
        Listener::RightQuestion question{job->sender, {}, right};
        std::ranges::copy(*job->request.auth, question.form.begin());
        if (const auto helper = self.lock())
            helper->_listener.copyRight(question, std::move(answer));
    };
    auto decide = [self = weak_from_this(), job, sender, turn](const Result<void>& allowed) {
        const auto helper = self.lock();
        if (!helper)
            return;
        if (!allowed)
            helper->refuse(*job, sender, allowed.error());
        else if (!job->service)
            helper->refuse(*job, sender, RequestReader::deserializeError(job->request.message));
        else
            helper->perform(job, sender, turn);
    };
    ZRKAuthorizationManager::validateAuthorizationExternalData(
        *job->request.auth, *BRVAuthorizationRightsForMessage(job->request.message), job->sender, ask, decide);
}

const std::shared_ptr<platform::Queue>& SchedulerHelper::queueOf(Service::Lane lane) const
{
    return lane == Service::Lane::Reading ? _readingQueue : _changingQueue;
}

void SchedulerHelper::perform(const std::shared_ptr<Job>& job, const ServicePeer& sender, const Turns::Turn& turn)
{
    queueOf(job->service->lane)->async([self = shared_from_this(), job, sender, turn] {
        const auto complete = self->completionOf(job, sender);
        if (job->needsRight && self->_maintenance->isUninstalling())
            return complete(std::unexpected(Error{BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr}));
        auto payload = RequestReader::payloadOfRequest(job->request);
        job->request.payload.reset();
        if (!payload)
            return complete(std::unexpected(std::move(payload.error())));
        job->service->perform({job->request.message, sender, std::move(*payload), turn}, complete);
    });
}

// Any thread.
Service::Completion SchedulerHelper::completionOf(const std::shared_ptr<Job>& job, const ServicePeer& sender)
{
    return [self = shared_from_this(), job, sender](const Service::Outcome& outcome) {
        if (job->reply)
            job->reply(replyTo(job->request.message, outcome));
        if (outcome && job->needsRight)
            RefusalLog::accepted(job->request.message, sender);
        if (!outcome) {
            self->_listener.async([self, message = job->request.message, sender, error = outcome.error()] {
                self->_refusals.refused(message, sender, error, RefusalLog::Clock::now());
            });
        }
    };
}

void SchedulerHelper::refuse(const Job& job, const ServicePeer& sender, const Error& error)
{
    if (job.reply)
        job.reply(ReplyBuilder::replyWithError(error));
    _refusals.refused(job.request.message, sender, error, RefusalLog::Clock::now());
}

bool SchedulerHelper::drain(std::chrono::milliseconds limit)
{
    _turns->dropAll();
    _maintenance->endChecks();
    _maintenance->stopWaiting();
    auto end = std::chrono::steady_clock::now() + limit;
    for (const auto& queue :
         {_readingQueue, _changingQueue, _listingQueue, _maintenance->queue(), _maintenance->checkQueue()}) {
        auto done = std::make_shared<std::promise<void>>();
        queue->async([done] { done->set_value(); });
        if (done->get_future().wait_until(end) != std::future_status::ready)
            return false;
    }
    const auto left = [end] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    };
    if (!_enforcer.stop(left()) || !_snapshots.stop(left()))
        return false;
    _refusals.reportAll();
    return true;
}

Service::Outcome SchedulerHelper::applySettings(const Service::Call& call)
{
    auto settings =
        validRecord(call, [](const Dictionary& record) { return SettingsValidator::faultInSettings(record); });
    if (!settings)
        return std::unexpected(std::move(settings.error()));
    auto stored = _settings.setSettings(*settings);
    _enforcer.apply(*_settings.settings()); // which may be new even when not everything was stored
    followSnapshotsSetting();
    if (!stored)
        return std::unexpected(std::move(stored.error()));
    ZRKLogMessage(LogLevelDefault, "Applied settings: backups %d, mode %@, snapshots %d.",
                  {settings->boolForKey(ScheduleKey::Backups) ? 1 : 0,
                   *settings->stringForKey(ScheduleKey::BackupsMode),
                   settings->boolForKey(ScheduleKey::Snapshots) ? 1 : 0});
    return changed();
}

Service::Outcome SchedulerHelper::setBackupProgram(const Service::Call& call)
{
    const auto* const choice = call.payload ? call.payload->dictionary() : nullptr;
    if (!choice)
        return std::unexpected(RequestReader::deserializeError(call.message));
    if (auto chosen = _program->choose(*choice, PasswordRule::allowsWithoutPassword()); !chosen)
        return std::unexpected(std::move(chosen.error()));
    const auto name = _program->name();
    ZRKLogMessage(LogLevelDefault, "The backup program is now %@.", {name.empty() ? "none" : name});
    _enforcer.conditionsChanged();
    _snapshots.look();
    return changed();
}

Service::Outcome SchedulerHelper::setAutoUpdates(const Service::Call& call)
{
    auto record = validRecord(call, [](const Dictionary& sent) { return SettingsValidator::faultInAutoUpdates(sent); });
    if (!record)
        return std::unexpected(std::move(record.error()));
    bool enabled = record->boolForKey(PayloadKey::Enabled);
    auto stored = _autoUpdates.setEnabled(enabled);
    followAutoUpdatesSetting();
    if (!stored)
        return std::unexpected(std::move(stored.error()));
    ZRKLogMessage(LogLevelDefault, "Automatic updates are %@.", {enabled ? "on" : "off"});
    return changed();
}

Service::Outcome SchedulerHelper::setAllowWithoutPassword(const Service::Call& call)
{
    auto record =
        validRecord(call, [](const Dictionary& sent) { return SettingsValidator::faultInAllowWithoutPassword(sent); });
    if (!record)
        return std::unexpected(std::move(record.error()));
    bool allowed = record->boolForKey(PayloadKey::Allow);
    if (auto written = _maintenance->passwordRule().setAllowsWithoutPassword(allowed); !written)
        return std::unexpected(std::move(written.error()));
    ZRKLogMessage(LogLevelDefault, "Changing settings %@ password.", {allowed ? "needs no" : "needs a"});
    return changed();
}

} // namespace helper
