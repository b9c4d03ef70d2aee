#include "tests/platform/ScriptedSnapshots.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace scripted::snapshots {

namespace {

struct FileSystems {
    std::map<std::string, Snapshots> volumes;
    platform::SnapshotAccess missingAccess = platform::SnapshotAccess::FullDisk;
    int timesOpened = 0;
    std::vector<std::uint64_t> askedSizes;
};

FileSystems& fileSystems()
{
    static FileSystems& shared = *new FileSystems;
    return shared;
}

class ScriptedSnapshotVolume final : public platform::SnapshotVolume {
public:
    explicit ScriptedSnapshotVolume(Snapshots snapshots) : _snapshots(std::move(snapshots)) { }

    std::size_t bufferSize() const override
    {
        std::size_t size = 256;
        for (const auto& answer : _snapshots.answers)
            size = std::max(size, answer.bytes.size());
        return size;
    }

    int nextRecords(std::span<std::byte> buffer) override
    {
        if (_next == _snapshots.answers.size())
            return 0;
        const auto& answer = _snapshots.answers[_next++];
        if (answer.bytes.size() > buffer.size())
            throw std::logic_error("The buffer is smaller than was asked for");
        // What a call leaves of the one before must not be taken for its own.
        std::ranges::fill(buffer, std::byte(0));
        std::ranges::copy(answer.bytes, buffer.begin());
        return answer.count;
    }

    std::optional<std::uint64_t> sizeOfSnapshot(std::uint64_t objectIdentifier) override
    {
        fileSystems().askedSizes.push_back(objectIdentifier);
        const auto found = _snapshots.sizes.find(objectIdentifier);
        return found == _snapshots.sizes.end() ? std::nullopt : std::optional(found->second);
    }

private:
    Snapshots _snapshots;
    std::size_t _next = 0;
};

} // namespace

void reset()
{
    fileSystems() = FileSystems();
}

void set(const std::string& url, Snapshots snapshots)
{
    fileSystems().volumes[url] = std::move(snapshots);
}

void setMissingAccess(platform::SnapshotAccess access)
{
    fileSystems().missingAccess = access;
}

int timesOpened()
{
    return fileSystems().timesOpened;
}

std::vector<std::uint64_t> askedSizes()
{
    return fileSystems().askedSizes;
}

} // namespace scripted::snapshots

namespace platform {

SnapshotAccess missingSnapshotAccess()
{
    return scripted::snapshots::fileSystems().missingAccess;
}

std::expected<std::unique_ptr<SnapshotVolume>, int> SnapshotVolume::open(const std::string& url)
{
    using namespace scripted::snapshots;
    ++fileSystems().timesOpened;
    const auto found = fileSystems().volumes.find(url);
    const int refusal = found == fileSystems().volumes.end() ? ENOENT : found->second.refusal;
    if (refusal != 0)
        return std::unexpected(refusal);
    return std::make_unique<ScriptedSnapshotVolume>(found->second);
}

} // namespace platform
