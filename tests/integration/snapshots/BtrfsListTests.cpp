#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "platform/Snapshots.h"
#include "platform/Volumes.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"
#include "tests/support/ForkedProcess.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <doctest/doctest.h>
#include <fstream>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#define NEEDS_BTRFS()                                                                                                  \
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {                                                   \
        std::printf("SKIPPED: %s\n", reason.c_str());                                                                  \
        return;                                                                                                        \
    }

namespace {

using List = BRVLocalSnapshotsController::SnapshotList;

List listOf(const std::string& path)
{
    std::optional<platform::Error> error;
    const auto list = BRVLocalSnapshotsController::create()->snapshotsAtURL(path, &error);
    REQUIRE(list);
    return *list;
}

// As the tool prints them.
std::vector<ListedSnapshot> asListed(const List& list)
{
    std::vector<ListedSnapshot> listed;
    for (const auto& snapshot : list) {
        const auto seconds =
            static_cast<std::time_t>(snapshot.find("Date")->date()->secondsSinceReferenceDate + 978'307'200);
        std::tm parts{};
        localtime_r(&seconds, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
        listed.push_back({text, *snapshot.stringForKey("Name")});
    }
    return listed;
}

void checkAgainstTool(const std::string& path, std::size_t count)
{
    const auto ours = asListed(listOf(path));
    const auto theirs = snapshotsListedByTool(path);
    CHECK(ours.size() == count);
    REQUIRE(ours.size() == theirs.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        CHECK(ours[i].time == theirs[i].time);
        CHECK(ours[i].path == theirs[i].path);
    }
}

void writeMegabytes(const std::string& path, int count)
{
    std::ofstream file(path, std::ios::binary);
    const std::string block(1 << 20, static_cast<char>('a' + count % 26));
    for (int i = 0; i < count; ++i)
        file << block;
}

// Exclusive bytes by identifier of the subvolume, as the tool tells them.
std::map<std::string, std::uint64_t> exclusiveBytesByTool(const std::string& path)
{
    std::map<std::string, std::uint64_t> found;
    for (const auto& line : linesOf({"btrfs", "qgroup", "show", "--raw", path})) {
        char group[64];
        unsigned long long referenced = 0;
        unsigned long long exclusive = 0;
        if (std::sscanf(line.c_str(), "0/%63s %llu %llu", group, &referenced, &exclusive) == 3)
            found[group] = exclusive;
    }
    return found;
}

std::string identifierOf(const std::string& subvolume)
{
    return linesOf({"btrfs", "inspect-internal", "rootid", subvolume}).at(0);
}

} // namespace

TEST_CASE("the list is that of btrfs subvolume list -s, line by line")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Plain");
    checkAgainstTool(volume.path(), 0);
    volume.createSubvolume("work");
    volume.createSubvolume("work/inner");
    checkAgainstTool(volume.path(), 0);
    volume.folder("kept/by hand");
    volume.createSnapshot("work", "first");
    volume.createSnapshot("work", "kept/by hand/writable", false);
    volume.createSnapshot("", "whole");
    volume.createSnapshot("first", "work/snapshot of a snapshot", false);
    volume.createSnapshot("work/inner", "work/inner/deep");
    volume.folder("work/inner/folder");
    volume.createSnapshot("work", "work/inner/folder/Grüße 日本");
    checkAgainstTool(volume.path(), 6);
    run({"btrfs", "subvolume", "delete", volume.file("first")});
    checkAgainstTool(volume.path(), 5);
    run({"mv", volume.file("kept"), volume.file("moved")});
    checkAgainstTool(volume.path(), 5);
}

TEST_CASE("hundreds of snapshots come in the order of btrfs subvolume list -s")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Many");
    volume.createSubvolume("work");
    volume.folder("z");
    volume.folder("a");
    std::vector<std::string> command{
        "sh", "-c",
        "for i in $(seq 150); do btrfs -q subvolume snapshot -r \"$0/work\" \"$0/z/$i\" && "
        "btrfs -q subvolume snapshot \"$0/work\" \"$0/a/with a longer name to fill the "
        "buffers of the search sooner $i\" || exit 1; done",
        volume.path()};
    run(command);
    checkAgainstTool(volume.path(), 300);
}

TEST_CASE("a name that is not UTF-8 is shown with replacement characters")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Broken");
    volume.createSubvolume("work");
    volume.createSnapshot("work", "br\xFFken");
    const auto list = listOf(volume.path());
    REQUIRE(list.size() == 1);
    CHECK(*list[0].stringForKey("Name") == "br\uFFFDken");
}

TEST_CASE("a very long path is told whole")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Deep");
    volume.createSubvolume("work");
    std::string path;
    for (int i = 0; i < 12; ++i)
        path += std::string(200, static_cast<char>('a' + i)) + "/";
    volume.folder(path);
    volume.createSnapshot("work", path + "snapshot");
    const auto list = listOf(volume.path());
    REQUIRE(list.size() == 1);
    CHECK(*list[0].stringForKey("Name") == path + "snapshot");
}

TEST_CASE("sizes are there while quotas count them, and listing never switches quotas on")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Quotas");
    volume.createSubvolume("work");
    writeMegabytes(volume.file("work/file"), 3);
    volume.createSnapshot("work", "old");
    writeMegabytes(volume.file("work/file"), 2);
    volume.createSnapshot("work", "new", false);
    run({"sync", "-f", volume.path()});
    for (const auto& snapshot : listOf(volume.path()))
        CHECK_FALSE(snapshot.contains("Size"));
    CHECK_THROWS(linesOf({"btrfs", "qgroup", "show", volume.path()}));

    run({"btrfs", "quota", "enable", volume.path()});
    run({"btrfs", "quota", "rescan", "-w", volume.path()});
    run({"sync", "-f", volume.path()});
    const auto list = listOf(volume.path());
    const auto counted = exclusiveBytesByTool(volume.path());
    REQUIRE(list.size() == 2);
    for (const auto& snapshot : list) {
        const auto& name = *snapshot.stringForKey("Name");
        CAPTURE(name);
        REQUIRE(snapshot.contains("Size"));
        CHECK(static_cast<std::uint64_t>(snapshot.integerForKey("Size"))
              == counted.at(identifierOf(volume.file(name))));
    }
    CHECK(list[0].integerForKey("Size") > 3'000'000);

    run({"btrfs", "quota", "disable", volume.path()});
    for (const auto& snapshot : listOf(volume.path()))
        CHECK_FALSE(snapshot.contains("Size"));
}

TEST_CASE("an ordinary user is refused with EPERM")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Closed");
    volume.createSubvolume("work");
    volume.createSnapshot("work", "first");
    ::chmod(volume.path().substr(0, volume.path().rfind('/')).c_str(), 0755);
    const auto answer = inForkedProcess([&] {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0)
            return std::string("no other user");
        const auto opened = platform::SnapshotVolume::open(volume.path());
        return opened ? std::string("opened") : std::to_string(opened.error());
    });
    CHECK(answer == std::to_string(EPERM));
}

TEST_CASE("a volume that is not there or no btrfs is refused with the system's own code")
{
    NEEDS_BTRFS();
    CHECK(platform::SnapshotVolume::open("/no/such/volume").error() == ENOENT);
    CHECK(platform::SnapshotVolume::open("/proc").error() == ENOTTY);
    CHECK(platform::SnapshotVolume::open("/etc/passwd").error() == ENOTDIR);
}

TEST_CASE("of several mounts of one file system one qualifies, that of the whole before all others")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Several");
    volume.createSubvolume("work");
    const TemporaryDirectory other;
    run({"mount", "-o", "subvol=work", volume.device(), other.path()});
    const auto controller = BRVLocalSnapshotsController::create();
    controller->awakeFromNib();
    CHECK(controller->isAPFSDataOrBackupVolumeAtURL(volume.path()));
    CHECK_FALSE(controller->isAPFSDataOrBackupVolumeAtURL(other.path()));
    const auto service = platform::DiskSession::create()->serviceOfVolume(other.path());
    REQUIRE(service);
    CHECK(service->isSnapshotVolume);
    CHECK(service->role == platform::PropertyList(platform::Array{"Subvolume"}));
    run({"umount", volume.path()});
    CHECK(controller->isAPFSDataOrBackupVolumeAtURL(other.path()));
    CHECK_FALSE(controller->isAPFSDataOrBackupVolumeAtURL(volume.path()));
    run({"umount", other.path()});
}

TEST_CASE("other file systems and plain folders do not qualify")
{
    NEEDS_BTRFS();
    const auto controller = BRVLocalSnapshotsController::create();
    controller->awakeFromNib();
    const TemporaryDirectory folder;
    CHECK_FALSE(controller->isAPFSDataOrBackupVolumeAtURL("/proc"));
    CHECK_FALSE(controller->isAPFSDataOrBackupVolumeAtURL(folder.path()));
    run({"mount", "-t", "tmpfs", "none", folder.path()});
    CHECK_FALSE(controller->isAPFSDataOrBackupVolumeAtURL(folder.path()));
    run({"umount", folder.path()});
}
