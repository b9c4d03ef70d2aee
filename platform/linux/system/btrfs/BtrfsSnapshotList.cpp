#include "platform/linux/system/btrfs/BtrfsSnapshotList.h"

#include "platform/linux/system/btrfs/BtrfsTree.h"
#include "platform/linux/system/journal/JsonText.h"

#include <cstddef>
#include <endian.h>
#include <map>
#include <unordered_map>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t sizeUpToCreationTime = offsetof(btrfs_root_item, otime) + sizeof(btrfs_timespec);

// Where a subvolume stands: in which folder of which other one.
struct Place {
    std::uint64_t parent = 0;
    std::uint64_t folder = 0;
    std::string name;
};

class RootTree {
public:
    RootTree(int volume, const BtrfsSnapshotLimits& limits) : _volume(volume), _limits(limits) { }

    void take(const BtrfsItem& item)
    {
        _isComplete = _isComplete && (item.type != BTRFS_ROOT_ITEM_KEY || ++_rootCount <= _limits.subvolumes);
        if (!_isComplete)
            return;
        if (item.type == BTRFS_ROOT_ITEM_KEY)
            takeRoot(item);
        else if (item.type == BTRFS_ROOT_BACKREF_KEY)
            takePlace(item);
    }

    bool isEmpty() const { return _places.empty() && _roots.empty(); }
    // False when there are more than the limits allow; known after snapshots().
    bool isComplete() const { return _isComplete; }
    std::vector<SnapshotAttributes> snapshots();

private:
    void takeRoot(const BtrfsItem& item);
    void takePlace(const BtrfsItem& item);
    const std::string* folderPath(std::uint64_t subvolume, std::uint64_t folder);
    std::optional<std::string> path(std::uint64_t subvolume);

    const int _volume;
    const BtrfsSnapshotLimits _limits;
    bool _isComplete = true;
    std::size_t _rootCount = 0;
    std::vector<SnapshotAttributes> _roots;
    std::unordered_map<std::uint64_t, Place> _places;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::string> _folders;
};

// A snapshot's key carries the transaction in which it was made; a plain subvolume's has 0 there.
void RootTree::takeRoot(const BtrfsItem& item)
{
    const auto root = item.content<btrfs_root_item>(sizeUpToCreationTime);
    const bool isBeingDeleted = root && le32toh(root->refs) == 0;
    if (!root || isBeingDeleted || item.offset == 0)
        return;
    _roots.push_back({.objectIdentifier = item.objectIdentifier,
                      .creationSeconds = static_cast<std::int64_t>(le64toh(root->otime.sec)),
                      .creationNanoseconds = le32toh(root->otime.nsec),
                      .name = {}});
}

void RootTree::takePlace(const BtrfsItem& item)
{
    const auto reference = item.content<btrfs_root_ref>();
    if (!reference || item.bytes.size() < sizeof *reference + le16toh(reference->name_len))
        return;
    const auto* const name = reinterpret_cast<const char*>(item.bytes.data() + sizeof *reference);
    _places[item.objectIdentifier] = {item.offset, le64toh(reference->dirid),
                                      std::string(name, le16toh(reference->name_len))};
}

const std::string* RootTree::folderPath(std::uint64_t subvolume, std::uint64_t folder)
{
    const auto [found, isNew] = _folders.try_emplace({subvolume, folder});
    if (!isNew)
        return &found->second;
    auto path = btrfsFolderPath(_volume, subvolume, folder);
    if (!path) {
        _folders.erase(found);
        return nullptr;
    }
    found->second = std::move(*path);
    return &found->second;
}

// Nothing for a subvolume that has no place any more. Damaged places that lead in a circle end too.
std::optional<std::string> RootTree::path(std::uint64_t subvolume)
{
    std::string path;
    for (std::size_t steps = 0; subvolume != BTRFS_FS_TREE_OBJECTID; ++steps) {
        const auto place = _places.find(subvolume);
        if (place == _places.end() || steps > _places.size())
            return std::nullopt;
        const auto* const folder = folderPath(place->second.parent, place->second.folder);
        if (!folder)
            return std::nullopt;
        path.insert(0, *folder + place->second.name + (path.empty() ? "" : "/"));
        subvolume = place->second.parent;
    }
    return path;
}

std::vector<SnapshotAttributes> RootTree::snapshots()
{
    std::vector<SnapshotAttributes> found;
    found.reserve(_roots.size());
    std::size_t nameBytes = 0;
    for (auto& root : _roots) {
        auto name = path(root.objectIdentifier);
        if (!name)
            continue;
        root.name = validUTF8(*name);
        nameBytes += root.name.size();
        if (nameBytes > _limits.nameBytes) {
            _isComplete = false;
            break;
        }
        found.push_back(std::move(root));
    }
    return found;
}

} // namespace

std::expected<BtrfsSnapshotList, int> BtrfsSnapshotList::read(int volume, const BtrfsSnapshotLimits& limits)
{
    RootTree tree(volume, limits);
    const auto failure =
        visitBtrfsTree(volume, {BTRFS_ROOT_TREE_OBJECTID, BTRFS_FIRST_FREE_OBJECTID, BTRFS_LAST_FREE_OBJECTID},
                       [&](const BtrfsItem& item) { tree.take(item); });
    if (failure && tree.isEmpty())
        return std::unexpected(*failure);
    auto snapshots = tree.snapshots();
    return BtrfsSnapshotList{std::move(snapshots), !failure && tree.isComplete()};
}

} // namespace platform
