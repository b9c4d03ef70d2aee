#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
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

// The file systems that can be reached, in the order in which they were mounted.
class MountTable {
public:
    // As the system has it now. Null when the system does not tell.
    static std::shared_ptr<const MountTable> read();
    // The same, read only when it has changed since the last time. Main thread only.
    static std::shared_ptr<const MountTable> current();
    static int timesRead(); // in this process

    explicit MountTable(std::vector<Mount> mounts);

    const std::vector<Mount>& mounts() const { return _mounts; }
    // Null when nothing is mounted there.
    const Mount* at(std::string_view path) const;

private:
    std::vector<Mount> _mounts;
    std::map<std::string_view, std::size_t> _places; // by path
};

inline bool isBtrfs(const Mount& mount)
{
    return mount.type == "btrfs";
}

// What a file manager calls it: the file system's label, or else the folder's name.
std::string nameOfMount(const Mount& mount);

} // namespace platform
