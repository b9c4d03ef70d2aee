#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <linux/btrfs.h>
#include <linux/btrfs_tree.h>
#include <optional>
#include <span>
#include <string>

namespace platform {

struct BtrfsItem {
    std::uint64_t objectIdentifier = 0;
    std::uint32_t type = 0;
    std::uint64_t offset = 0;
    std::span<const std::byte> bytes;

    // The structure at the item's beginning; nullopt when the item is shorter than `size`, of which the rest is zero.
    template <class T>
    std::optional<T> content(std::size_t size = sizeof(T)) const
    {
        T value{};
        if (bytes.size() < size)
            return std::nullopt;
        std::memcpy(&value, bytes.data(), bytes.size() < sizeof(T) ? bytes.size() : sizeof(T));
        return value;
    }
};

struct BtrfsRange {
    std::uint64_t tree = 0;
    std::uint64_t firstObject = 0;
    std::uint64_t lastObject = UINT64_MAX;
};

// Visits the items of a tree in the order of their keys. Needs the right to administer the system. The failure is an
// errno value.
std::optional<int> visitBtrfsTree(int volume, const BtrfsRange& range,
                                  const std::function<void(const BtrfsItem&)>& visit);

// The path of a folder below the top of the subvolume, with a slash at the end unless it is the top itself.
std::optional<std::string> btrfsFolderPath(int volume, std::uint64_t subvolume, std::uint64_t folder);

// Empty when there is none, or it cannot be read.
std::string btrfsLabel(const std::string& path);

} // namespace platform
