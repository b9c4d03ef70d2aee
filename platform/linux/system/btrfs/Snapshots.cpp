#include "platform/Snapshots.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/btrfs/AttributeRecord.h"
#include "platform/linux/system/btrfs/BtrfsQuota.h"
#include "platform/linux/system/btrfs/BtrfsSnapshotList.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace platform {

namespace {

class BtrfsSnapshotVolume final : public SnapshotVolume {
public:
    BtrfsSnapshotVolume(FileDescriptor volume, BtrfsSnapshotList list)
        : _volume(std::move(volume)),
          _list(std::move(list))
    {
        for (const auto& snapshot : _list.snapshots)
            _bufferSize = std::max(_bufferSize, sizeOfAttributeRecord(snapshot));
    }

    std::size_t bufferSize() const override { return _bufferSize; }

    int nextRecords(std::span<std::byte> buffer) override
    {
        int count = 0;
        for (; _next < _list.snapshots.size(); ++_next, ++count) {
            const auto size = packAttributeRecord(_list.snapshots[_next], buffer);
            if (size == 0)
                return count > 0 ? count : -1;
            buffer = buffer.subspan(size);
        }
        return count == 0 && !_list.isComplete ? -1 : count;
    }

    std::optional<std::uint64_t> sizeOfSnapshot(std::uint64_t objectIdentifier) override
    {
        if (!_quota)
            _quota = BtrfsQuota::read(_volume.get());
        return _quota->exclusiveBytes(objectIdentifier);
    }

private:
    FileDescriptor _volume;
    BtrfsSnapshotList _list;
    std::size_t _next = 0;
    std::size_t _bufferSize = std::size_t(64) * 1024;
    std::optional<BtrfsQuota> _quota; // read when the first size is asked for
};

} // namespace

SnapshotAccess missingSnapshotAccess()
{
    return SnapshotAccess::Administrator;
}

std::expected<std::unique_ptr<SnapshotVolume>, int> SnapshotVolume::open(const std::string& url)
{
    FileDescriptor volume(::open(url.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!volume)
        return std::unexpected(errno);
    // Here the system refuses the reading, not the opening.
    auto list = BtrfsSnapshotList::read(volume.get());
    if (!list)
        return std::unexpected(list.error());
    return std::make_unique<BtrfsSnapshotVolume>(std::move(volume), std::move(*list));
}

} // namespace platform
