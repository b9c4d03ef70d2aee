#include "platform/linux/system/btrfs/AttributeRecord.h"

#include "platform/Snapshots.h"

#include <cstring>

namespace platform {

namespace {

constexpr std::size_t RecordAlignment = 4;
constexpr std::size_t NameReferencePlace = 4 + 5 * 4; // after the length and the returned set
constexpr std::size_t TextPlace = NameReferencePlace + 8 + 8 + 16;

class RecordPacker {
public:
    explicit RecordPacker(std::byte* place) : _place(place) { }

    template <class T>
    void put(T value)
    {
        std::memcpy(_place, &value, sizeof value);
        _place += sizeof value;
    }
    void put(const std::string& text, std::size_t size)
    {
        std::memset(_place, 0, size);
        std::memcpy(_place, text.data(), text.size());
    }

private:
    std::byte* _place;
};

std::size_t alignedRecordSize(std::size_t size)
{
    return (size + RecordAlignment - 1) / RecordAlignment * RecordAlignment;
}

} // namespace

std::size_t sizeOfAttributeRecord(const SnapshotAttributes& snapshot)
{
    return TextPlace + alignedRecordSize(snapshot.name.size() + 1);
}

std::size_t packAttributeRecord(const SnapshotAttributes& snapshot, std::span<std::byte> buffer)
{
    const auto size = sizeOfAttributeRecord(snapshot);
    if (size > buffer.size())
        return 0;
    RecordPacker packer(buffer.data());
    packer.put(static_cast<std::uint32_t>(size));
    packer.put(AttributeReturnedSet | AttributeName | AttributeObjectIdentifier | AttributeCreationTime);
    for (int group = 1; group < 5; ++group)
        packer.put(std::uint32_t(0));
    packer.put(static_cast<std::int32_t>(TextPlace - NameReferencePlace));
    packer.put(static_cast<std::uint32_t>(snapshot.name.size() + 1));
    packer.put(snapshot.objectIdentifier);
    packer.put(snapshot.creationSeconds);
    packer.put(snapshot.creationNanoseconds);
    packer.put(snapshot.name, size - TextPlace);
    return size;
}

} // namespace platform
