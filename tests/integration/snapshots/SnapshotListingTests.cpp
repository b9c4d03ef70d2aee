#include "helper/linux/snapshots/SnapshotListing.h"
#include "platform/linux/system/bus/BusPeers.h"
#include "platform/linux/system/bus/ServiceMessage.h"
#include "platform/PropertyListCoding.h"
#include "protocol/SnapshotList.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <doctest/doctest.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

using platform::Dictionary;
using platform::PropertyList;

namespace {

Dictionary listed(const std::string& volume, const platform::BtrfsSnapshotLimits& limits = {})
{
    const auto reply = helper::listLocalSnapshots(volume, limits);
    REQUIRE(reply);
    REQUIRE(reply->dictionary());
    return *reply->dictionary();
}

std::vector<std::string> namesIn(const Dictionary& reply)
{
    std::vector<std::string> names;
    for (const auto& each : *reply.arrayForKey("Snapshots"))
        names.push_back(*each.dictionary()->stringForKey("Name"));
    return names;
}

std::int64_t failureToList(const std::string& volume)
{
    const auto reply = helper::listLocalSnapshots(volume);
    REQUIRE_FALSE(reply);
    CHECK(reply.error().domain == platform::POSIXErrorDomain);
    return reply.error().code;
}

} // namespace

#define NEEDS_A_VOLUME()                                                                                               \
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {                                                   \
        std::printf("SKIPPED: %s\n", reason.c_str());                                                                  \
        return;                                                                                                        \
    }

TEST_CASE("the helper tells of each snapshot what the system's own tool tells")
{
    NEEDS_A_VOLUME();
    const BtrfsVolume volume("listed");
    CHECK(namesIn(listed(volume.path())).empty());
    volume.createSubvolume("data");
    for (const auto* const name : {"b", "a"})
        volume.createSnapshot("data", name, true);
    const auto reply = listed(volume.path());
    CHECK(reply.boolForKey("Complete"));
    const auto byTool = snapshotsListedByTool(volume.path());
    const auto& list = *reply.arrayForKey("Snapshots");
    REQUIRE(list.size() == 2);
    REQUIRE(byTool.size() == 2);
    for (std::size_t index = 0; index < list.size(); ++index) {
        const auto& snapshot = *list[index].dictionary();
        CHECK(*snapshot.stringForKey("Name") == byTool[index].path);
        const auto made = static_cast<time_t>(snapshot.find("Date")->date()->secondsSinceReferenceDate) + 978'307'200;
        char text[20] = {};
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&made));
        CHECK(text == byTool[index].time);
        CHECK_FALSE(snapshot.contains("Size")); // there are no quotas
    }
}

TEST_CASE("sizes are told where the file system counts them")
{
    NEEDS_A_VOLUME();
    const BtrfsVolume volume("counted");
    volume.createSubvolume("data");
    linesOf({"btrfs", "quota", "enable", volume.path()});
    linesOf({"btrfs", "quota", "rescan", "-w", volume.path()});
    volume.createSnapshot("data", "a", true);
    linesOf({"sync", "-f", volume.path()});
    const auto reply = listed(volume.path());
    REQUIRE(reply.arrayForKey("Snapshots")->size() == 1);
    CHECK((*reply.arrayForKey("Snapshots"))[0].dictionary()->integerForKey("Size") > 0);
}

TEST_CASE("only the mount point of a btrfs volume is listed, by the name that the system has for it")
{
    NEEDS_A_VOLUME();
    const BtrfsVolume volume("named");
    const auto folder = volume.folder("folder");
    const TemporaryDirectory other;
    const auto link = other.file("link");
    REQUIRE(::symlink(volume.path().c_str(), link.c_str()) == 0);
    for (const auto& path :
         {folder, link, volume.path() + "/", volume.path() + "/.", other.path(), std::string("/proc"), std::string(),
          std::string("relative"), volume.path() + std::string("\0x", 2)}) {
        CAPTURE(path);
        CHECK(failureToList(path) == ENOENT);
    }
    CHECK(namesIn(listed(volume.path())).empty());
}

TEST_CASE("the longest reply is one that the bus carries, that cuts nobody off, and that the application reads")
{
    constexpr auto limits = helper::SnapshotListingLimits;
    platform::Array snapshots;
    for (std::size_t made = 0; made < limits.subvolumes; ++made) {
        auto name = std::to_string(made);
        name.resize(limits.nameBytes / limits.subvolumes, 'n');
        snapshots.emplace_back(Dictionary{{SnapshotListKey::Name, name},
                                          {SnapshotListKey::Date, platform::Date{800'000'000.0 + double(made)}},
                                          {SnapshotListKey::Size, UINT64_MAX - made}});
    }
    const PropertyList reply =
        Dictionary{{SnapshotListKey::Snapshots, std::move(snapshots)}, {SnapshotListKey::Complete, false}};
    const auto bytes = platform::binaryPropertyList(reply);
    REQUIRE(bytes);
    MESSAGE(bytes->size() << " bytes");
    CHECK(bytes->size() < platform::MaximumServiceMessageSize);
    CHECK(bytes->size() < platform::BusPeers::CutOffSize);
    const auto read = platform::propertyListWithData(*bytes);
    REQUIRE(read);
    CHECK(*read == reply);
}

TEST_CASE("what exceeds the limits is left out, and the reply says so")
{
    NEEDS_A_VOLUME();
    const BtrfsVolume volume("many");
    volume.createSubvolume("data");
    for (const auto* const name : {"s1", "s2", "s3"})
        volume.createSnapshot("data", name, true);
    const auto few = listed(volume.path(), {.subvolumes = 3});
    CHECK(namesIn(few) == std::vector<std::string>{"s1", "s2"}); // "data" is looked at too
    CHECK_FALSE(few.boolForKey("Complete"));
    const auto all = listed(volume.path(), {.subvolumes = 4, .nameBytes = 6});
    CHECK(namesIn(all).size() == 3);
    CHECK(all.boolForKey("Complete"));
    const auto shorter = listed(volume.path(), {.nameBytes = 5});
    CHECK(namesIn(shorter) == std::vector<std::string>{"s1", "s2"});
    CHECK_FALSE(shorter.boolForKey("Complete"));
}
