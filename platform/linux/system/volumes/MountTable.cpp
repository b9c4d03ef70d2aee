#include "platform/linux/system/volumes/MountTable.h"

#include "platform/linux/system/btrfs/BtrfsTree.h"
#include "platform/linux/system/journal/JsonText.h"
#include "platform/Localization.h"

#include <algorithm>
#include <libmount/libmount.h>
#include <map>
#include <memory>

namespace platform {

namespace {

struct TableDeleter {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
};
struct IteratorDeleter {
    void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

std::string textOrEmpty(const char* text)
{
    return text ? text : "";
}

Mount mountOfEntry(libmnt_fs* entry)
{
    Mount mount{
        .identifier = mnt_fs_get_id(entry),
        .path = textOrEmpty(mnt_fs_get_target(entry)),
        .source = textOrEmpty(mnt_fs_get_source(entry)),
        .type = textOrEmpty(mnt_fs_get_fstype(entry)),
        .root = textOrEmpty(mnt_fs_get_root(entry)),
        .device = mnt_fs_get_devno(entry),
        .isNetworked = mnt_fs_is_netfs(entry) != 0,
        .isHidden = false,
    };
    char* value = nullptr;
    std::size_t length = 0;
    // File managers leave out what was mounted with this option, or below a folder whose name begins with a dot.
    mount.isHidden =
        mnt_fs_get_option(entry, "x-gvfs-hide", &value, &length) == 0 || mount.path.find("/.") != std::string::npos;
    return mount;
}

// A later mount on the same path covers the earlier one.
void removeCovered(std::vector<Mount>& mounts)
{
    std::map<std::string, std::size_t, std::less<>> last;
    for (std::size_t i = 0; i < mounts.size(); ++i)
        last[mounts[i].path] = i;
    std::size_t at = 0;
    std::erase_if(mounts, [&](const Mount& mount) { return last[mount.path] != at++; });
}

// Every mount of a btrfs file system leads to all of its snapshots, so one is enough: that of the whole file system, or
// else the first.
void chooseRepresentatives(std::vector<Mount>& mounts)
{
    std::map<std::uint64_t, Mount*> chosen;
    for (auto& mount : mounts) {
        if (!isBtrfs(mount))
            continue;
        auto*& best = chosen[mount.device];
        mount.representsFileSystem = !best || (best->root != "/" && mount.root == "/");
        if (!mount.representsFileSystem)
            continue;
        if (best)
            best->representsFileSystem = false;
        best = &mount;
    }
}

} // namespace

std::optional<std::vector<Mount>> readMountTable()
{
    const std::unique_ptr<libmnt_table, TableDeleter> table(mnt_new_table());
    const std::unique_ptr<libmnt_iter, IteratorDeleter> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator || mnt_table_parse_mtab(table.get(), nullptr) != 0)
        return std::nullopt;
    std::vector<Mount> mounts;
    for (libmnt_fs* entry = nullptr; mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0;)
        mounts.push_back(mountOfEntry(entry));
    removeCovered(mounts);
    chooseRepresentatives(mounts);
    return mounts;
}

std::string nameOfMount(const Mount& mount)
{
    if (isBtrfs(mount)) {
        if (const auto label = validUTF8(btrfsLabel(mount.path)); !label.empty())
            return label;
    }
    const auto name = validUTF8(std::string_view(mount.path).substr(mount.path.rfind('/') + 1));
    return name.empty() ? localizedString("File System") : name;
}

} // namespace platform
