#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

struct Mount {
    int identifier = 0; // of this one act of mounting
    std::string path;
    std::string source; // such as "/dev/sda1"
    std::string type;
    std::string root;         // what of the file system is mounted: "/" is all of it
    std::uint64_t device = 0; // the same for all mounts of one file system
    bool isNetworked = false;
    bool isHidden = false;            // from file managers
    bool representsFileSystem = true; // the one to show of all mounts of a btrfs file system
};

// The file systems that can be reached, in the order in which they were mounted. nullopt when the system does not tell.
std::optional<std::vector<Mount>> readMountTable();

inline bool isBtrfs(const Mount& mount)
{
    return mount.type == "btrfs";
}

// What a file manager calls it: the file system's label, or else the folder's name.
std::string nameOfMount(const Mount& mount);

} // namespace platform
