#include "helper/ReplyBuilder.h"
#include "helper/RequestReader.h"
#include "helper/SettingsValidator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using namespace helper;

namespace {

using platform::Data;
using platform::ServiceDictionary;

// The input: one byte says what is there and of which type, the next how long the authorization is; then the number,
// the authorization and the payload.
ServiceDictionary messageOfInput(std::span<const std::uint8_t> input)
{
    enum : unsigned {
        HasNumber = 1,
        NumberIsData = 2,
        HasAuth = 4,
        AuthIsNumber = 8,
        HasPayload = 16,
        PayloadIsNumber = 32
    };
    auto take = [&](std::size_t count) {
        auto taken = input.first(std::min(count, input.size()));
        input = input.subspan(taken.size());
        return Data(taken.begin(), taken.end());
    };
    auto head = take(2);
    head.resize(2);
    ServiceDictionary message;
    if (head[0] & HasNumber) {
        auto bytes = take(1);
        auto number = static_cast<std::int64_t>(bytes.empty() ? 0 : bytes[0]) - 4;
        message["message"] = number;
        if (head[0] & NumberIsData)
            message["message"] = bytes;
    }
    if (head[0] & HasAuth) {
        message["auth"] = take(head[1]);
        if (head[0] & AuthIsNumber)
            message["auth"] = std::int64_t(head[1]);
    }
    if (head[0] & HasPayload) {
        message["payload"] = take(input.size());
        if (head[0] & PayloadIsNumber)
            message["payload"] = std::int64_t(7);
    }
    return message;
}

// What is accepted can be written, and is read back the same.
void checkAccepted(const platform::Dictionary& settings)
{
    auto reply = ReplyBuilder::replyWithResult(1, settings);
    if (!reply.contains("payload"))
        std::abort();
    auto again = RequestReader::payloadOfRequest({2, {}, std::get<Data>(reply["payload"])});
    if (!again || !*again || **again != platform::PropertyList(settings))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto request = RequestReader::requestForMessage(messageOfInput({data, size}));
    if (!request) {
        ReplyBuilder::replyWithError(request.error());
        return 0;
    }
    auto payload = RequestReader::payloadOfRequest(*request);
    if (!payload) {
        ReplyBuilder::replyWithError(payload.error());
        return 0;
    }
    const auto* record = *payload ? (*payload)->dictionary() : nullptr;
    if (!record)
        return 0;
    SettingsValidator::faultInAutoUpdates(*record);
    if (auto fault = SettingsValidator::faultInSettings(*record))
        ReplyBuilder::replyWithError(fault->error());
    else
        checkAccepted(*record);
    return 0;
}
