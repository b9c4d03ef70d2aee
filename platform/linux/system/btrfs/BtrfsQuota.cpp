#include "platform/linux/system/btrfs/BtrfsQuota.h"

#include "platform/linux/system/btrfs/BtrfsTree.h"

#include <endian.h>

namespace platform {

namespace {

// The upper 16 bits are the level of a group; those of subvolumes themselves are on level 0.
bool isOfSubvolume(std::uint64_t group)
{
    return group >> 48 == 0;
}

} // namespace

BtrfsQuota BtrfsQuota::read(int volume)
{
    BtrfsQuota quota;
    bool isTrustworthy = false;
    const auto failure = visitBtrfsTree(volume, {BTRFS_QUOTA_TREE_OBJECTID, 0, 0}, [&](const BtrfsItem& item) {
        if (item.type == BTRFS_QGROUP_STATUS_KEY) {
            const auto status = item.content<btrfs_qgroup_status_item>(offsetof(btrfs_qgroup_status_item, rescan));
            const auto flags = status ? le64toh(status->flags) : 0;
            isTrustworthy =
                (flags & BTRFS_QGROUP_STATUS_FLAG_ON) != 0 && (flags & BTRFS_QGROUP_STATUS_FLAG_INCONSISTENT) == 0;
        } else if (item.type == BTRFS_QGROUP_INFO_KEY && isOfSubvolume(item.offset)) {
            if (const auto info = item.content<btrfs_qgroup_info_item>())
                quota._exclusiveBytes[item.offset] = le64toh(info->excl);
        }
    });
    return failure || !isTrustworthy ? BtrfsQuota() : quota;
}

std::optional<std::uint64_t> BtrfsQuota::exclusiveBytes(std::uint64_t subvolume) const
{
    const auto found = _exclusiveBytes.find(subvolume);
    return found == _exclusiveBytes.end() ? std::nullopt : std::optional(found->second);
}

} // namespace platform
