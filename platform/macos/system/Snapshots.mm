#include "platform/Snapshots.h"

#include "platform/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#import <Foundation/Foundation.h>
#include <sys/attr.h>
#include <unistd.h>

namespace platform {

namespace {

static_assert(AttributeName == ATTR_CMN_NAME && AttributeObjectIdentifier == ATTR_CMN_OBJID
              && AttributeCreationTime == ATTR_CMN_CRTIME && AttributeReturnedSet == ATTR_CMN_RETURNED_ATTRS);

// Neither has a name in the system's headers: the option that lists a volume's snapshots in place of its files, and the
// file system's request for the size of one.
constexpr std::uint64_t listSnapshots = 0x40;
constexpr unsigned long sizeRequest = 0xC0184A13;

struct SizeQuery {
    std::uint64_t first;
    std::uint64_t last;
    std::uint64_t size;
};
static_assert(sizeof(SizeQuery) == 24);

class APFSVolume final : public SnapshotVolume {
public:
    explicit APFSVolume(FileDescriptor volume) : _volume(std::move(volume)) { }

    std::size_t bufferSize() const override { return 256; }

    int nextRecords(std::span<std::byte> buffer) override
    {
        attrlist request{};
        request.bitmapcount = ATTR_BIT_MAP_COUNT;
        request.commonattr = AttributeName | AttributeObjectIdentifier | AttributeCreationTime | AttributeReturnedSet;
        if (@available(macOS 10.10, *))
            return ::getattrlistbulk(_volume.get(), &request, buffer.data(), buffer.size(), listSnapshots);
        return -1;
    }

    std::optional<std::uint64_t> sizeOfSnapshot(std::uint64_t objectIdentifier) override
    {
        SizeQuery query{objectIdentifier, objectIdentifier, 0};
        if (::ffsctl(_volume.get(), sizeRequest, &query, 0) != 0)
            return std::nullopt;
        return query.size;
    }

private:
    FileDescriptor _volume;
};

} // namespace

SnapshotAccess missingSnapshotAccess()
{
    return SnapshotAccess::FullDisk;
}

std::expected<std::unique_ptr<SnapshotVolume>, int> SnapshotVolume::open(const std::string& url)
{
    FileDescriptor volume(::open(url.c_str(), O_RDONLY | O_CLOEXEC));
    if (!volume)
        return std::unexpected(errno);
    return std::make_unique<APFSVolume>(std::move(volume));
}

} // namespace platform
