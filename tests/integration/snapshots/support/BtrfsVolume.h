#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <string>
#include <vector>

// The lines of its standard output; throws when it fails. The first argument is the program.
std::vector<std::string> linesOf(const std::vector<std::string>& command);
inline void run(const std::vector<std::string>& command)
{
    linesOf(command);
}

// Why no btrfs file systems can be made and mounted on this machine; empty when they can. When they can, this process
// has a mount namespace of its own from then on: nobody else sees what it mounts, and the system unmounts it and frees
// the loop devices when the process ends, however it ends. To be called before other threads start.
std::string reasonWithoutBtrfs();

// A new btrfs file system in a file, mounted through a loop device.
class BtrfsVolume {
public:
    explicit BtrfsVolume(const std::string& label, unsigned megabytes = 256);
    ~BtrfsVolume();
    BtrfsVolume(const BtrfsVolume&) = delete;
    BtrfsVolume& operator=(const BtrfsVolume&) = delete;

    const std::string& path() const { return _path; } // of the mount point
    std::string file(const std::string& name) const { return _path + "/" + name; }
    const std::string& device() const { return _device; } // such as "/dev/loop3", while it is mounted

    void unmount();
    void mount();
    // Lets the kernel tell of a change to the device, as its tools do.
    void announceChange() const;

    void createSubvolume(const std::string& name) const;
    void createSnapshot(const std::string& source, const std::string& name, bool isReadOnly = true) const;
    std::string folder(const std::string& name) const; // makes it; its path

private:
    TemporaryDirectory _directory;
    std::string _path;
    std::string _device;
};

// One line of `btrfs subvolume list -s`.
struct ListedSnapshot {
    std::string time; // "2026-11-21 07:03:15", in the time zone of the machine
    std::string path;
    bool operator==(const ListedSnapshot&) const = default;
};
std::vector<ListedSnapshot> snapshotsListedByTool(const std::string& path);
