#include "tests/shell/support/PlayedScheduler.h"

#include "messaging/BRVHelperMessager.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <doctest/doctest.h>

PlayedScheduler::PlayedScheduler(ScheduleSettings record) : _state(std::make_shared<State>())
{
    setRecord(std::move(record));
    scripted::service::setHandler(
        [state = _state](const platform::ServiceDictionary& request) { return state->answer(request); });
}

platform::ServiceReply PlayedScheduler::State::answer(const platform::ServiceDictionary& request)
{
    const std::int64_t message = std::get<std::int64_t>(request.at("message"));
    if (message == BRVMessageApplySettings) {
        const auto payload = platform::propertyListWithData(std::get<platform::Data>(request.at("payload")));
        REQUIRE(payload);
        REQUIRE(payload->dictionary());
        received.push_back(*payload->dictionary());
    } else {
        CHECK(message == BRVMessageGetSettings);
        CHECK(request.count("payload") == 0);
        ++fetches;
    }
    if (reply)
        return *reply;
    if (message == BRVMessageGetSettings)
        return platform::ServiceDictionary{{"payload", platform::binaryPropertyList(record).value()}};
    if (refusal)
        return platform::ServiceDictionary{{"error", platform::archivedError(*refusal)}};
    record = received.back();
    return platform::ServiceDictionary{};
}
