#include "platform/linux/system/btrfs/BtrfsTree.h"

#include "platform/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>

namespace platform {

namespace {

constexpr std::size_t SearchBufferSize = 256 * 1024;

// The next key after the last one that was found. False at the very last key.
bool advanceSearch(btrfs_ioctl_search_key& key, const BtrfsItem& last)
{
    key.min_objectid = last.objectIdentifier;
    key.min_type = last.type;
    key.min_offset = last.offset + 1;
    if (key.min_offset == 0 && ++key.min_type > UINT8_MAX) {
        key.min_type = 0;
        ++key.min_objectid;
        return key.min_objectid != 0;
    }
    return true;
}

} // namespace

std::optional<int> visitBtrfsTree(int volume, const BtrfsRange& range,
                                  const std::function<void(const BtrfsItem&)>& visit)
{
    // Words, so that the head of the arguments is aligned.
    const auto storage = std::make_unique<std::uint64_t[]>((sizeof(btrfs_ioctl_search_args_v2) + SearchBufferSize) / 8);
    auto& arguments = *reinterpret_cast<btrfs_ioctl_search_args_v2*>(storage.get());
    auto& key = arguments.key;
    key.tree_id = range.tree;
    key.min_objectid = range.firstObject;
    key.max_objectid = range.lastObject;
    key.max_offset = UINT64_MAX;
    key.max_transid = UINT64_MAX;
    key.max_type = UINT8_MAX;
    for (;;) {
        key.nr_items = UINT32_MAX;
        arguments.buf_size = SearchBufferSize;
        if (::ioctl(volume, BTRFS_IOC_TREE_SEARCH_V2, &arguments) != 0)
            return errno;
        if (key.nr_items == 0)
            return std::nullopt;
        const auto* at = reinterpret_cast<const std::byte*>(arguments.buf);
        BtrfsItem item;
        for (std::uint32_t i = 0; i < key.nr_items; ++i) {
            btrfs_ioctl_search_header header;
            std::memcpy(&header, at, sizeof header);
            at += sizeof header;
            item = {header.objectid, header.type, header.offset, {at, header.len}};
            at += header.len;
            visit(item);
        }
        if (!advanceSearch(key, item))
            return std::nullopt;
    }
}

std::optional<std::string> btrfsFolderPath(int volume, std::uint64_t subvolume, std::uint64_t folder)
{
    btrfs_ioctl_ino_lookup_args arguments{};
    arguments.treeid = subvolume;
    arguments.objectid = folder;
    if (::ioctl(volume, BTRFS_IOC_INO_LOOKUP, &arguments) != 0)
        return std::nullopt;
    return std::string(arguments.name, ::strnlen(arguments.name, sizeof arguments.name));
}

std::string btrfsLabel(const std::string& path)
{
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    char label[FSLABEL_MAX + 1] = {};
    return folder && ::ioctl(folder.get(), BTRFS_IOC_GET_FSLABEL, label) == 0 ? label : "";
}

} // namespace platform
