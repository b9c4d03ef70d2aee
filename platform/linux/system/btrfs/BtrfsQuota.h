#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

namespace platform {

// What the quota groups of a btrfs file system count, if they are on; they are never switched on here.
class BtrfsQuota {
public:
    // Empty when quotas are off or cannot be read, and while the counts are known to be wrong.
    static BtrfsQuota read(int volume);

    // What only this subvolume holds: about what deleting it would free.
    std::optional<std::uint64_t> exclusiveBytes(std::uint64_t subvolume) const;

private:
    std::unordered_map<std::uint64_t, std::uint64_t> _exclusiveBytes;
};

} // namespace platform
