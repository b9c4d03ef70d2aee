#include "messaging/BRVHelperMessager.h"

#include "messaging/ZRKAuthorizationManager.h"

#include <array>
#include <utility>

namespace {

enum class Need { None, Settings, Uninstall };
using enum Need;

// By message number, ten a line.
constexpr std::array needs{
    None, None,     Settings, Settings, Settings, None,     Settings, None,     None,      None, //
    None, Settings, Settings, Settings, Settings, None,     None,     Settings, None,      None, //
    None, Settings, Settings, Settings, None,     Settings, None,     Settings, Uninstall,
};
static_assert(needs.size() == 29);

} // namespace

std::optional<std::vector<std::string>> BRVAuthorizationRightsForMessage(std::int64_t message)
{
    if (message < 0 || message >= static_cast<std::int64_t>(needs.size()))
        return std::nullopt;
    switch (needs[static_cast<std::size_t>(message)]) {
    case Settings:
        return std::vector<std::string>{BRVRightModifySettings1, BRVRightModifySettings2};
    case Uninstall:
        return std::vector<std::string>{BRVRightUninstall};
    case None:
        break;
    }
    return std::vector<std::string>();
}

const std::shared_ptr<BRVHelperMessager>& BRVHelperMessager::sharedMessager()
{
    // Never destroyed: replies may still arrive while the process ends.
    static const auto& shared = *new std::shared_ptr<BRVHelperMessager>(create());
    return shared;
}

std::shared_ptr<BRVHelperMessager> BRVHelperMessager::create()
{
    const std::shared_ptr<BRVHelperMessager> messager(new BRVHelperMessager);
    messager->_client = std::make_unique<ZRKMessagerClient>(BRVSchedulerServiceName, messager);
    return messager;
}

platform::Result<void> BRVHelperMessager::sendMessage(std::int64_t message, const Payload& payload)
{
    return _client->sendMessage(message, payload);
}

void BRVHelperMessager::sendMessage(std::int64_t message, const Payload& payload,
                                    std::shared_ptr<platform::Queue> replyQueue, ReplyHandler handler)
{
    _client->sendMessage(message, payload, std::move(replyQueue), std::move(handler));
}

BRVHelperMessager::Reply BRVHelperMessager::sendSynchronousMessage(std::int64_t message, const Payload& payload)
{
    return _client->sendSynchronousMessage(message, payload);
}

void BRVHelperMessager::cancel()
{
    _client->cancel();
}

std::optional<std::vector<std::string>> BRVHelperMessager::authorizationRightsForMessage(const ZRKMessagerClient&,
                                                                                         std::int64_t message)
{
    return BRVAuthorizationRightsForMessage(message);
}

bool BRVHelperMessager::requiresAuthorizationForMessage(std::int64_t message) const
{
    const auto rights = BRVAuthorizationRightsForMessage(message);
    return rights && !rights->empty();
}
