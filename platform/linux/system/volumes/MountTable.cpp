#include "platform/linux/system/volumes/MountTable.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/btrfs/BtrfsTree.h"
#include "platform/linux/system/journal/JsonText.h"
#include "platform/Localization.h"

#include <algorithm>
#include <fcntl.h>
#include <libmount/libmount.h>
#include <optional>
#include <poll.h>
#include <sys/stat.h>
#include <utility>

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

// Every mount of a btrfs file system leads to all of its snapshots, so one is enough: one that is meant to be seen
// before others, that of the whole file system before others, or else the first.
void chooseRepresentatives(std::vector<Mount>& mounts)
{
    const auto rank = [](const Mount& mount) { return (mount.isHidden ? 0 : 2) + (mount.root == "/" ? 1 : 0); };
    std::map<std::uint64_t, Mount*> chosen;
    for (auto& mount : mounts) {
        if (!isBtrfs(mount))
            continue;
        auto*& best = chosen[mount.device];
        mount.representsFileSystem = !best || rank(mount) > rank(*best);
        if (!mount.representsFileSystem)
            continue;
        if (best)
            best->representsFileSystem = false;
        best = &mount;
    }
}

// Whether the table has changed since the last question. The kernel has the mounts; what mount(8) was told beyond that,
// "x-gvfs-hide" for one, stands in a file that is replaced a moment later.
class TableChanges {
public:
    bool haveHappened()
    {
        const bool mountsChanged = haveMountsChanged();
        const auto options = stateOfOptions();
        return std::exchange(_options, options) != options || mountsChanged;
    }

private:
    static constexpr const char* mountsFile = "/proc/self/mountinfo";
    static constexpr const char* optionsFile = "/run/mount/utab";

    struct FileState {
        ino_t inode = 0;
        off_t size = -1;
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        bool operator==(const FileState&) const = default;
    };

    bool haveMountsChanged()
    {
        if (!_mounts) {
            _mounts.reset(::open(mountsFile, O_RDONLY | O_CLOEXEC));
            return true;
        }
        pollfd source{_mounts.get(), POLLPRI, 0};
        return ::poll(&source, 1, 0) != 0;
    }

    static FileState stateOfOptions()
    {
        struct stat status{};
        if (::stat(optionsFile, &status) != 0)
            return {};
        return {status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    }

    FileDescriptor _mounts;
    std::optional<FileState> _options;
};

int& readings()
{
    static int count = 0;
    return count;
}

} // namespace

MountTable::MountTable(std::vector<Mount> mounts) : _mounts(std::move(mounts))
{
    for (std::size_t place = 0; place < _mounts.size(); ++place)
        _places[_mounts[place].path] = place;
}

const Mount* MountTable::at(std::string_view path) const
{
    const auto found = _places.find(path);
    return found == _places.end() ? nullptr : &_mounts[found->second];
}

std::shared_ptr<const MountTable> MountTable::read()
{
    const std::unique_ptr<libmnt_table, TableDeleter> table(mnt_new_table());
    const std::unique_ptr<libmnt_iter, IteratorDeleter> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator || mnt_table_parse_mtab(table.get(), nullptr) != 0)
        return nullptr;
    std::vector<Mount> mounts;
    for (libmnt_fs* entry = nullptr; mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0;)
        mounts.push_back(mountOfEntry(entry));
    removeCovered(mounts);
    chooseRepresentatives(mounts);
    return std::make_shared<const MountTable>(std::move(mounts));
}

std::shared_ptr<const MountTable> MountTable::current()
{
    static TableChanges changes;
    static std::shared_ptr<const MountTable> table;
    if (changes.haveHappened() || !table) {
        table = read();
        ++readings();
    }
    return table;
}

int MountTable::timesRead()
{
    return readings();
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
