#include "helper/enforcement/SnapshotKeeper.h"
#include "helper/enforcement/SnapshotPlan.h"
#include "helper/linux/snapshots/BtrfsSnapshots.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using helper::MadeSnapshot;
using platform::Dictionary;

namespace {

constexpr std::int64_t hour = 3'600;
constexpr std::int64_t day = 86'400;

// A volume whose folder is to have snapshots, and the keeper's list beside it.
struct KeptVolume {
    // The helper begins, does what there is to do now, and ends.
    void keep(bool isEnabled = true) const
    {
        helper::SnapshotKeeper keeper(
            list, [this] { return std::vector{volume.file("data")}; }, std::make_shared<helper::BtrfsSnapshots>());
        keeper.setEnabled(isEnabled);
        REQUIRE(keeper.stop(std::chrono::seconds(20)));
    }

    std::vector<MadeSnapshot> made() const
    {
        std::vector<MadeSnapshot> snapshots;
        const auto bytes = platform::readFile(list);
        const auto content =
            bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
        if (bytes && content && content->dictionary()) {
            for (const auto& each : *content->dictionary()->arrayForKey("Snapshots"))
                snapshots.push_back(*MadeSnapshot::inDictionary(*each.dictionary()));
        }
        return snapshots;
    }

    // As if so much time had passed since they were made.
    void age(std::int64_t seconds) const
    {
        platform::Array aged;
        for (auto snapshot : made()) {
            snapshot.at -= seconds;
            aged.emplace_back(snapshot.dictionary());
        }
        REQUIRE(platform::replaceFile(list, *platform::binaryPropertyList(Dictionary{{"Snapshots", std::move(aged)}})));
    }

    std::vector<std::string> paths() const
    {
        std::vector<std::string> found;
        for (const auto& snapshot : made())
            found.push_back(snapshot.path);
        return found;
    }

    BtrfsVolume volume{"kept"};
    std::string data = volume.folder("data");
    TemporaryDirectory folder;
    std::string list = folder.file("snapshots.plist");
};

bool exists(const std::string& path)
{
    return ::access(path.c_str(), F_OK) == 0;
}

std::size_t countOfSnapshots(const KeptVolume& kept)
{
    return snapshotsListedByTool(kept.volume.path()).size();
}

} // namespace

#define NEEDS_BTRFS()                                                                                                  \
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {                                                   \
        std::printf("SKIPPED: %s\n", reason.c_str());                                                                  \
        return;                                                                                                        \
    }

TEST_CASE("one snapshot is made at once, and one when an hour is over")
{
    NEEDS_BTRFS();
    const KeptVolume kept;
    kept.keep();
    REQUIRE(kept.made().size() == 1);
    CHECK(kept.made()[0].path.starts_with(kept.volume.path() + "/.brevane-snapshots/"));
    CHECK(exists(kept.made()[0].path + "/data"));
    kept.keep(); // a helper that begins anew
    CHECK(countOfSnapshots(kept) == 1);
    kept.age(hour - 60);
    kept.keep();
    CHECK(countOfSnapshots(kept) == 1);
    kept.age(60);
    kept.keep();
    CHECK(kept.made().size() == 2);
    CHECK(countOfSnapshots(kept) == 2);
}

TEST_CASE("without the setting no snapshot is made, and the newest one stays however old it is")
{
    NEEDS_BTRFS();
    const KeptVolume kept;
    kept.keep(false);
    CHECK(countOfSnapshots(kept) == 0);
    kept.keep();
    kept.age(30 * day);
    kept.keep(false);
    CHECK(kept.made().size() == 1);
    CHECK(countOfSnapshots(kept) == 1);
}

TEST_CASE("those that are a day old are removed, and of others' snapshots none")
{
    NEEDS_BTRFS();
    const KeptVolume kept;
    kept.keep();
    kept.age(hour);
    kept.keep();
    const auto old = kept.paths();
    REQUIRE(old.size() == 2);
    // Somebody's own, which has such a name, and what takes the place of one that somebody has removed.
    kept.volume.createSnapshot("", ".brevane-snapshots/2020-01-01-000000");
    run({"btrfs", "subvolume", "delete", old[0]});
    kept.volume.createSnapshot("", old[0].substr(kept.volume.path().size() + 1));
    kept.age(day - 60);
    kept.keep();
    CHECK(kept.made().size() == 2); // the replaced one is forgotten, a new one is made
    CHECK(exists(old[1]));
    kept.age(61);
    kept.keep();
    CHECK_FALSE(exists(old[1]));
    CHECK(exists(old[0]));
    CHECK(exists(kept.volume.file(".brevane-snapshots/2020-01-01-000000")));
    CHECK(kept.made().size() == 1);
    CHECK(countOfSnapshots(kept) == 3);
}
