#include "helper/enforcement/SnapshotPlan.h"

#include <doctest/doctest.h>

using helper::MadeSnapshot;
using helper::SnapshotPlan;
using Volumes = std::vector<std::string>;

namespace {

constexpr scheduling::Instant now = 1'767'225'600;

MadeSnapshot snapshot(const std::string& volume, std::int64_t age)
{
    return {volume, volume + "/" + std::to_string(age), "id" + std::to_string(age), now - age};
}

} // namespace

TEST_CASE("the first snapshot of a volume is made at once, and the next an hour after it")
{
    const auto first = SnapshotPlan::at(now, {"/home"}, {}, {});
    CHECK(first.make == Volumes{"/home"});
    CHECK(first.next == now + 3'600);
    CHECK(SnapshotPlan::at(now, {"/home"}, {snapshot("/home", 3'599)}, {}).make.empty());
    CHECK(SnapshotPlan::at(now, {"/home"}, {snapshot("/home", 3'599)}, {}).next == now + 1);
    CHECK(SnapshotPlan::at(now, {"/home"}, {snapshot("/home", 3'600)}, {}).make == Volumes{"/home"});
}

TEST_CASE("each volume has its own hour")
{
    const auto plan = SnapshotPlan::at(now, {"/", "/home"}, {snapshot("/", 600)}, {});
    CHECK(plan.make == Volumes{"/home"});
    CHECK(plan.next == now + 3'000);
}

TEST_CASE("a snapshot that could not be made is tried again after an hour")
{
    CHECK(SnapshotPlan::at(now, {"/"}, {}, {{"/", now - 3'599}}).make.empty());
    CHECK(SnapshotPlan::at(now, {"/"}, {}, {{"/", now - 3'600}}).make == Volumes{"/"});
}

TEST_CASE("snapshots older than a day are removed, the newest of their volume excepted")
{
    const std::vector made{snapshot("/", 200'000), snapshot("/", 90'000), snapshot("/home", 86'401),
                           snapshot("/home", 86'400), snapshot("/home", 100)};
    const auto plan = SnapshotPlan::at(now, {}, made, {});
    CHECK(plan.make.empty());
    CHECK(plan.remove == std::vector{made[0], made[2]});
    CHECK(plan.next == now + 1);
}

TEST_CASE("without volumes and with one snapshot there is nothing to wake up for")
{
    CHECK_FALSE(SnapshotPlan::at(now, {}, {snapshot("/", 100)}, {}).next);
}

TEST_CASE("a snapshot comes back from its dictionary, and not from one that lacks something")
{
    const auto made = snapshot("/", 5);
    CHECK(MadeSnapshot::inDictionary(made.dictionary()) == made);
    for (const auto* key : {"Volume", "Path", "Identifier", "At"}) {
        auto dictionary = made.dictionary();
        dictionary.remove(key);
        CHECK_FALSE(MadeSnapshot::inDictionary(dictionary));
    }
}
