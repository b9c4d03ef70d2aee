#include "tests/shell/support/PlayedScheduler.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <algorithm>
#include <doctest/doctest.h>

using platform::Dictionary;

namespace {

bool takesPayload(std::int64_t message)
{
    return message == BRVMessageApplySettings || message == BRVMessageSetAllowWithoutPassword
        || message == BRVMessageSetAutoUpdates || message == BRVMessageSetBackupProgram
        || message == BRVMessageListSnapshots;
}

Dictionary ruleFor(bool allowsWithoutPassword)
{
    return {{"rule", platform::Array{allowsWithoutPassword ? "is-admin" : "authenticate-admin"}}};
}

} // namespace

PlayedScheduler::PlayedScheduler(ScheduleSettings record) : _state(std::make_shared<State>())
{
    setRecord(std::move(record));
    scripted::service::setHandler(
        [state = _state](const platform::ServiceDictionary& request) { return state->answer(request); });
}

void PlayedScheduler::answerMessage(std::int64_t message, platform::ServiceReply reply)
{
    _state->replies.insert_or_assign(message, std::move(reply));
}

void PlayedScheduler::refuseMessage(std::int64_t message, const platform::Error& error)
{
    answerMessage(message, replyWithError(error));
}

std::size_t PlayedScheduler::count(std::int64_t message) const
{
    return static_cast<std::size_t>(std::ranges::count(_state->messages, message));
}

platform::ServiceReply PlayedScheduler::State::answer(const platform::ServiceDictionary& request)
{
    const std::int64_t message = std::get<std::int64_t>(request.at("message"));
    messages.push_back(message);
    CHECK(request.contains("payload") == takesPayload(message));
    if (takesPayload(message)) {
        const auto payload = platform::propertyListWithData(std::get<platform::Data>(request.at("payload")));
        REQUIRE(payload);
        REQUIRE(payload->dictionary());
        payloads[message].push_back(*payload->dictionary());
    }
    if (reply)
        return *reply;
    const auto particular = replies.find(message);
    return particular != replies.end() ? particular->second : usualAnswer(message);
}

platform::ServiceReply PlayedScheduler::State::usualAnswer(std::int64_t message)
{
    switch (message) {
    case BRVMessageGetSettings:
        return replyWith(record);
    case BRVMessageApplySettings:
        if (refusal)
            return replyWithError(*refusal);
        record = payloads[message].back();
        break;
    case BRVMessageSetAllowWithoutPassword:
        scripted::authorization::setDefinition(BRVRightModifySettings1,
                                               ruleFor(payloads[message].back().boolForKey("Allow")));
        break;
    case BRVMessageGetAutoUpdates:
        return replyWith(Dictionary{{"Enabled", installsUpdates}});
    case BRVMessageSetAutoUpdates:
        installsUpdates = payloads[message].back().boolForKey("Enabled");
        break;
    case BRVMessageGetBackupProgram:
        return replyWith(backupProgram);
    case BRVMessageSetBackupProgram:
        for (const auto* const key : {"Program", "Fields", "PreventSleep"}) {
            const auto* const value = payloads[message].back().find(key);
            if (value)
                backupProgram.set(key, *value);
            else
                backupProgram.remove(key);
        }
        return replyWith(Dictionary{{"Applied", true}});
    case BRVMessageListSnapshots:
        return replyWith(Dictionary{{"Snapshots", platform::Array()}, {"Complete", true}});
    case BRVMessageCheckForUpdates:
        return replyWithError({ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate, {}, nullptr});
    case BRVMessageGetStatus:
        return replyWith(status);
    case BRVMessageStartBackup:
    case BRVMessageInstallUpdate:
    case BRVMessageUninstall:
        break;
    default:
        FAIL("The application sends no message " << message);
    }
    return platform::ServiceDictionary{};
}

platform::ServiceReply replyWith(const platform::PropertyList& payload)
{
    return platform::ServiceDictionary{{"payload", platform::binaryPropertyList(payload).value()}};
}

platform::ServiceReply replyWithError(const platform::Error& error)
{
    return platform::ServiceDictionary{{"error", platform::archivedError(error)}};
}
