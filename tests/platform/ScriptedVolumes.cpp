#include "tests/platform/ScriptedVolumes.h"

#include "platform/ObserverList.h"

#include <algorithm>
#include <utility>
#include <vector>

using platform::VolumeNotification;

namespace scripted::volumes {

namespace {

struct Table {
    std::vector<Volume> volumes;
    std::optional<int> count;
    bool isReadable = true;
    int timesRead = 0;
};

Table& mountTable()
{
    static Table& shared = *new Table;
    return shared;
}

platform::ObserverList<VolumeNotification>& volumeObservers()
{
    static auto& shared = *new platform::ObserverList<VolumeNotification>;
    return shared;
}

const Volume* volumeAt(const std::string& path)
{
    const auto& volumes = mountTable().volumes;
    const auto found = std::ranges::find(volumes, path, &Volume::path);
    return found == volumes.end() ? nullptr : &*found;
}

class ScriptedDiskSession final : public platform::DiskSession {
public:
    std::optional<platform::VolumeService> serviceOfVolume(const std::string& url) override
    {
        const auto* const volume = volumeAt(url);
        return volume ? volume->service : std::nullopt;
    }
};

} // namespace

void reset()
{
    mountTable() = Table();
}

void add(Volume volume)
{
    mountTable().volumes.push_back(std::move(volume));
}

void setTable(int count, bool isReadable)
{
    mountTable().count = count;
    mountTable().isReadable = isReadable;
}

int timesRead()
{
    return mountTable().timesRead;
}

void mount(const Volume& volume)
{
    add(volume);
    volumeObservers().tell({VolumeNotification::Event::DidMount, volume.path, {}, volume.name.value_or(std::string())});
}

void unmount(const std::string& path)
{
    std::erase_if(mountTable().volumes, [&](const Volume& volume) { return volume.path == path; });
    volumeObservers().tell({VolumeNotification::Event::DidUnmount, path, {}, {}});
}

void rename(const std::string& oldPath, const std::string& path, const std::string& name)
{
    for (auto& volume : mountTable().volumes) {
        if (volume.path == oldPath) {
            volume.path = path;
            volume.name = name;
        }
    }
    volumeObservers().tell({VolumeNotification::Event::DidRename, path, oldPath, name});
}

} // namespace scripted::volumes

namespace platform {

using namespace scripted::volumes;

int numberOfMountedFileSystems()
{
    return mountTable().count.value_or(static_cast<int>(mountTable().volumes.size()));
}

std::vector<MountedFileSystem> mountedFileSystems(int room)
{
    ++mountTable().timesRead;
    std::vector<MountedFileSystem> found;
    for (const auto& volume : mountTable().volumes) {
        if (mountTable().isReadable && static_cast<int>(found.size()) < room)
            found.push_back({volume.path, volume.flags});
    }
    return found;
}

std::optional<std::string> localizedVolumeName(const std::string& url)
{
    const auto* const volume = volumeAt(url);
    return volume ? volume->name : std::nullopt;
}

std::optional<std::string> effectiveVolumeIcon(const std::string& url)
{
    const auto* const volume = volumeAt(url);
    return volume ? volume->icon : std::nullopt;
}

std::optional<bool> isVolumeBrowsable(const std::string& url)
{
    const auto* const volume = volumeAt(url);
    return volume ? volume->browsable : std::nullopt;
}

std::shared_ptr<DiskSession> DiskSession::create()
{
    return std::make_shared<ScriptedDiskSession>();
}

VolumeObserver::VolumeObserver(std::function<void(const VolumeNotification&)> handler)
{
    volumeObservers().add(this, std::move(handler));
}

VolumeObserver::~VolumeObserver()
{
    volumeObservers().remove(this);
}

} // namespace platform
