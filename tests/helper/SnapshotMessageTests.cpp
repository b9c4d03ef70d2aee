#include "platform/linux/system/btrfs/SnapshotCreation.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/SnapshotList.h"
#include "tests/helper/RunningHelper.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <doctest/doctest.h>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using platform::Dictionary;
using platform::PropertyList;
using platform::ServiceDictionary;
using platform::ServiceReply;

namespace {

ServiceDictionary listRequest(const PropertyList& payload)
{
    return {{"message", BRVMessageListSnapshots}, {"auth", ownToken()}, {"payload", binaryData(payload)}};
}

ServiceDictionary listRequestFor(const std::string& volume)
{
    return listRequest(Dictionary{{SnapshotListKey::Volume, volume}});
}

std::vector<std::string> namesIn(const ServiceReply& reply)
{
    std::vector<std::string> names;
    const auto record = recordIn(reply);
    CHECK(record.boolForKey(SnapshotListKey::Complete));
    for (const auto& each : *record.arrayForKey(SnapshotListKey::Snapshots))
        names.push_back(*each.dictionary()->stringForKey(SnapshotListKey::Name));
    return names;
}

} // namespace

TEST_CASE("the snapshots of a volume are listed for who is authorized, and for nobody else")
{
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {
        std::printf("SKIPPED: %s\n", reason.c_str());
        return;
    }
    const BtrfsVolume volume("asked");
    volume.createSubvolume("data");
    volume.createSnapshot("data", "first");
    volume.createSnapshot("data", "second");
    RunningHelper helper(PolkitAuthority::Answer::Authorized);
    CHECK(namesIn(helper.send(listRequestFor(volume.path()))) == std::vector<std::string>{"first", "second"});
    volume.createSnapshot("data", "third");
    CHECK(namesIn(helper.send(listRequestFor(volume.path()))).size() == 3);
    helper.answerEverything(PolkitAuthority::Answer::Denied);
    checkError(helper.send(listRequestFor(volume.path())), ZRKAuthorizationErrorDomain,
               ZRKAuthorizationErrorValidateRights);
}

TEST_CASE("a list of snapshots needs an authorization, whatever the volume")
{
    RunningHelper helper(PolkitAuthority::Answer::Denied);
    checkError(helper.send(listRequestFor("/")), ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorValidateRights);
    auto request = listRequestFor("/");
    request.erase("auth");
    checkError(helper.send(request), ZRKMessagerErrorDomain, ZRKMessagerErrorMissingAuthorization);
}

TEST_CASE("a list of snapshots that names no mounted volume is refused")
{
    RunningHelper helper(PolkitAuthority::Answer::Authorized);
    for (const auto* const path : {"", "/proc", "/no/such/volume", "relative", "/dev/null"}) {
        CAPTURE(path);
        checkError(helper.send(listRequestFor(path)), platform::POSIXErrorDomain, ENOENT);
    }
    for (const PropertyList& payload :
         {PropertyList("text"), PropertyList(Dictionary{}), PropertyList(Dictionary{{SnapshotListKey::Volume, 1}})})
        checkError(helper.send(listRequest(payload)), ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage);
    checkError(helper.send({{"message", BRVMessageListSnapshots}, {"auth", ownToken()}}), ZRKMessagerErrorDomain,
               ZRKMessagerErrorDeserializeMessage);
}

TEST_CASE("while a volume of many snapshots is listed again and again others are answered at once")
{
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {
        std::printf("SKIPPED: %s\n", reason.c_str());
        return;
    }
    constexpr std::size_t many = 300;
    constexpr int lists = 20;
    const BtrfsVolume volume("full", 1024);
    for (std::size_t made = 0; made < many; ++made)
        REQUIRE(platform::createBtrfsSnapshot(volume.path(), std::to_string(made)));
    RunningHelper helper(PolkitAuthority::Answer::Authorized);
    std::vector<std::future<ServiceReply>> replies;
    for (int each = 0; each < lists; ++each) {
        const auto promise = std::make_shared<std::promise<ServiceReply>>();
        replies.push_back(promise->get_future());
        helper.client().sendXPCMessage(listRequestFor(volume.path()), platform::Queue::global(),
                                       [promise](ServiceReply reply) { promise->set_value(std::move(reply)); });
    }
    std::vector<std::chrono::nanoseconds> times;
    bool isListing = true;
    while (isListing) {
        const auto start = std::chrono::steady_clock::now();
        CHECK(helper.send({{"message", BRVMessageGetSettings}}));
        times.push_back(std::chrono::steady_clock::now() - start);
        isListing = replies.back().wait_for(std::chrono::milliseconds(1)) != std::future_status::ready;
    }
    for (auto& reply : replies)
        CHECK(namesIn(reply.get()).size() == many);
    std::ranges::sort(times);
    CHECK(times[times.size() / 2] < std::chrono::milliseconds(100));
}
