#include "helper/SchedulerHelper.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/ReplyBuilder.h"
#include "helper/SettingsValidator.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/SystemInformation.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleSettings.h"

#include <algorithm>
#include <cerrno>
#include <future>
#include <iterator>
#include <utility>

namespace helper {

using platform::Data;
using platform::Dictionary;
using platform::PropertyList;
using platform::Result;
using platform::ServiceDictionary;

namespace {

// Anyone may send. What waits is bounded, so that nobody can fill the memory by sending faster than we answer.
constexpr std::size_t maximumWaitingSize = std::size_t(64) << 20;
constexpr std::size_t requestOverhead = 1024;

std::size_t sizeOf(const ServiceDictionary& message)
{
    auto size = requestOverhead;
    for (const auto& [key, value] : message) {
        size += key.size();
        if (const auto* bytes = std::get_if<Data>(&value))
            size += bytes->size();
    }
    return size;
}

bool needsRight(std::int64_t message)
{
    auto rights = BRVAuthorizationRightsForMessage(message);
    return rights && !rights->empty();
}

bool needsRight(const ServiceDictionary& message)
{
    auto found = message.find("message");
    const auto* number = found == message.end() ? nullptr : std::get_if<std::int64_t>(&found->second);
    return number && needsRight(*number);
}

ServiceDictionary replyTo(std::int64_t message, const Result<PropertyList>& outcome)
{
    return outcome ? ReplyBuilder::replyWithResult(message, *outcome) : ReplyBuilder::replyWithError(outcome.error());
}

// What a request asks to be stored, if it is a record without a fault.
Result<Dictionary> validRecord(const Request& request, const RequestReader::Payload& payload,
                               std::optional<SettingsFault> (*faultIn)(const Dictionary&))
{
    const auto* record = payload ? payload->dictionary() : nullptr;
    if (!record)
        return std::unexpected(RequestReader::deserializeError(request.message));
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

} // namespace

const SchedulerHelper::Served SchedulerHelper::messageTable[] = {
    {BRVMessageGetSettings, &SchedulerHelper::getSettings},
    {BRVMessageApplySettings, &SchedulerHelper::applySettings},
    {BRVMessageSetAllowWithoutPassword, &SchedulerHelper::setAllowWithoutPassword},
    {BRVMessageGetAutoUpdates, &SchedulerHelper::getAutoUpdates},
    {BRVMessageSetAutoUpdates, &SchedulerHelper::setAutoUpdates},
};

std::shared_ptr<SchedulerHelper> SchedulerHelper::create(const HelperOptions& options,
                                                         Maintenance::EndHandler endHandler)
{
    return std::shared_ptr<SchedulerHelper>(new SchedulerHelper(options, std::move(endHandler)));
}

SchedulerHelper::SchedulerHelper(const HelperOptions& options, Maintenance::EndHandler endHandler)
    : _settings(platform::systemPath("/Library/Preferences/com.zerkolin.brevane.scheduler.plist")),
      _autoUpdates(platform::systemPath("/Library/Preferences/com.zerkolin.brevane.updates.plist")),
      _maintenance(Maintenance::create(options, std::move(endHandler))),
      _readingQueue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.reading")),
      _changingQueue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.changing")),
      _takesUpdates(options.updates.key.has_value()),
      _automaticUpdates(options.updates.interval,
                        [maintenance = _maintenance] { return maintenance->installUpdateUnasked(); })
{
    followAutoUpdatesSetting();
}

void SchedulerHelper::followAutoUpdatesSetting()
{
    _automaticUpdates.setEnabled(_takesUpdates && _autoUpdates.enabled());
}

void SchedulerHelper::handle(ServiceDictionary message, std::string sender, Reply reply)
{
    auto size = sizeOf(message);
    const auto& queue = needsRight(message) ? _changingQueue : _readingQueue;
    if (_waitingSize.fetch_add(size) > maximumWaitingSize) {
        _waitingSize -= size;
        reply(ReplyBuilder::replyWithError({platform::POSIXErrorDomain, EBUSY, {}, nullptr}));
        return;
    }
    queue->async([self = shared_from_this(), message = std::move(message), sender = std::move(sender),
                  reply = std::move(reply), size]() mutable {
        self->answer(std::move(message), sender, reply);
        self->_waitingSize -= size;
    });
}

bool SchedulerHelper::drain(std::chrono::milliseconds limit)
{
    auto end = std::chrono::steady_clock::now() + limit;
    for (const auto& queue : {_readingQueue, _changingQueue, _maintenance->queue()}) {
        auto done = std::make_shared<std::promise<void>>();
        queue->async([done] { done->set_value(); });
        if (done->get_future().wait_until(end) != std::future_status::ready)
            return false;
    }
    return true;
}

void SchedulerHelper::answer(ServiceDictionary message, const std::string& sender, const Reply& reply)
{
    auto request = RequestReader::requestForMessage(std::move(message));
    if (!request)
        return reply(ReplyBuilder::replyWithError(request.error()));
    if (auto authorized = authorize(*request, sender); !authorized)
        return reply(ReplyBuilder::replyWithError(authorized.error()));
    _maintenance->peers().add(sender);
    if (!beginMaintenance(request->message, sender, reply))
        reply(replyTo(request->message, perform(*request)));
}

bool SchedulerHelper::beginMaintenance(std::int64_t message, const std::string& sender, const Reply& reply)
{
    auto complete = [message, reply](Outcome outcome) { reply(replyTo(message, outcome)); };
    switch (message) {
    case BRVMessageCheckForUpdates:
        _maintenance->checkForUpdates(complete);
        return true;
    case BRVMessageInstallUpdate:
        _maintenance->installUpdate(complete);
        return true;
    case BRVMessageUninstall:
        _maintenance->uninstall(sender, complete);
        return true;
    default:
        return false;
    }
}

Result<void> SchedulerHelper::authorize(const Request& request, const std::string& sender) const
{
    auto rights = BRVAuthorizationRightsForMessage(request.message);
    if (!rights)
        return std::unexpected(RequestReader::deserializeError(request.message));
    if (rights->empty())
        return {};
    if (!request.auth)
        return std::unexpected(ZRKError::errorWithDomain(ZRKMessagerErrorDomain, ZRKMessagerErrorMissingAuthorization,
                                                         {{"message", request.message}}));
    return ZRKAuthorizationManager::validateAuthorizationExternalData(*request.auth, *rights, sender);
}

SchedulerHelper::Outcome SchedulerHelper::perform(const Request& request)
{
    auto served = std::ranges::find(messageTable, request.message, &Served::message);
    if (served == std::end(messageTable))
        return std::unexpected(RequestReader::deserializeError(request.message));
    if (needsRight(request.message) && _maintenance->isUninstalling())
        return std::unexpected(ZRKError::errorWithDomain(BRVErrorDomain, BRVErrorUpdateRunning));
    auto payload = RequestReader::payloadOfRequest(request);
    if (!payload)
        return std::unexpected(std::move(payload.error()));
    return (this->*served->perform)(request, *payload);
}

SchedulerHelper::Outcome SchedulerHelper::getSettings(const Request&, const Payload&)
{
    return PropertyList(*_settings.settings());
}

SchedulerHelper::Outcome SchedulerHelper::applySettings(const Request& request, const Payload& payload)
{
    auto settings = validRecord(request, payload, SettingsValidator::faultInSettings);
    if (!settings)
        return std::unexpected(std::move(settings.error()));
    if (auto stored = _settings.setSettings(*settings); !stored)
        return std::unexpected(std::move(stored.error()));
    ZRKLogMessage(LogLevelDefault, "Applied settings: backups %d, mode %@, snapshots %d.",
                  {settings->boolForKey(ScheduleKey::Backups) ? 1 : 0,
                   *settings->stringForKey(ScheduleKey::BackupsMode),
                   settings->boolForKey(ScheduleKey::Snapshots) ? 1 : 0});
    return changed();
}

SchedulerHelper::Outcome SchedulerHelper::getAutoUpdates(const Request&, const Payload&)
{
    return Dictionary{{PayloadKey::Enabled, _autoUpdates.enabled()}};
}

SchedulerHelper::Outcome SchedulerHelper::setAutoUpdates(const Request& request, const Payload& payload)
{
    auto record = validRecord(request, payload, SettingsValidator::faultInAutoUpdates);
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

SchedulerHelper::Outcome SchedulerHelper::setAllowWithoutPassword(const Request& request, const Payload& payload)
{
    auto record = validRecord(request, payload, SettingsValidator::faultInAllowWithoutPassword);
    if (!record)
        return std::unexpected(std::move(record.error()));
    bool allowed = record->boolForKey(PayloadKey::Allow);
    if (auto written = _maintenance->passwordRule().setAllowsWithoutPassword(allowed); !written)
        return std::unexpected(std::move(written.error()));
    ZRKLogMessage(LogLevelDefault, "Changing settings %@ a password.", {allowed ? "needs no" : "needs"});
    return changed();
}

} // namespace helper
