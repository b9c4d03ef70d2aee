#include "platform/Volumes.h"

#include "platform/linux/system/volumes/MountTable.h"
#include "platform/linux/system/volumes/UdevHandles.h"
#include "platform/linux/system/volumes/VolumeWatcher.h"

#include <memory>
#include <ranges>
#include <string_view>
#include <sys/stat.h>

namespace platform {

namespace {

// What is mounted there; null for nothing. It keeps the table that it stands in.
std::shared_ptr<const Mount> mountAt(const std::string& url)
{
    const auto table = MountTable::current();
    const auto* const mount = table ? table->at(url) : nullptr;
    return mount ? std::shared_ptr<const Mount>(table, mount) : nullptr;
}

UdevDevice deviceOfMount(udev& context, const Mount& mount)
{
    struct stat status{};
    if (::stat(mount.source.c_str(), &status) != 0 || !S_ISBLK(status.st_mode))
        return nullptr;
    return UdevDevice(udev_device_new_from_devnum(&context, 'b', status.st_rdev));
}

std::string_view deviceProperty(udev_device& device, const char* name)
{
    const char* const value = udev_device_get_property_value(&device, name);
    return value ? value : "";
}

// Of the disk that a partition is on, too.
bool hasSetAttribute(udev_device& device, const char* name)
{
    for (udev_device* each = &device; each; each = udev_device_get_parent(each)) {
        const char* const value = udev_device_get_sysattr_value(each, name);
        if (value)
            return std::string_view(value) == "1";
    }
    return false;
}

// The names are those that file managers ask of icon themes.
std::string iconOfDevice(udev_device& device)
{
    if (deviceProperty(device, "ID_CDROM") == "1")
        return "drive-optical";
    if (!deviceProperty(device, "ID_DRIVE_FLASH_SD").empty() || !deviceProperty(device, "ID_DRIVE_FLASH_MMC").empty())
        return "media-flash";
    const bool isUSB = deviceProperty(device, "ID_BUS") == "usb";
    if (hasSetAttribute(device, "removable"))
        return isUSB ? "drive-removable-media-usb" : "drive-removable-media";
    return isUSB ? "drive-harddisk-usb" : "drive-harddisk";
}

class LinuxDiskSession final : public DiskSession {
public:
    std::optional<VolumeService> serviceOfVolume(const std::string& url) override
    {
        const auto mount = mountAt(url);
        if (!mount)
            return std::nullopt;
        VolumeService service{.isSnapshotVolume = isBtrfs(*mount), .role = std::nullopt};
        if (service.isSnapshotVolume && !mount->representsFileSystem)
            service.role = Array{"Subvolume"};
        return service;
    }
};

} // namespace

int numberOfMountedFileSystems()
{
    const auto table = MountTable::current();
    return table ? static_cast<int>(table->mounts().size()) : -1;
}

std::vector<MountedFileSystem> mountedFileSystems(int room)
{
    const auto table = MountTable::current();
    if (!table)
        return {};
    VolumeWatcher::shared().didRead(table->mounts());
    std::vector<MountedFileSystem> found;
    for (const auto& mount : table->mounts() | std::views::take(room))
        found.push_back({mount.path, mount.isNetworked ? 0 : MountedFileSystem::Local});
    return found;
}

std::optional<std::string> localizedVolumeName(const std::string& url)
{
    const auto mount = mountAt(url);
    return mount ? std::optional(nameOfMount(*mount)) : std::nullopt;
}

std::optional<std::string> effectiveVolumeIcon(const std::string& url)
{
    const auto mount = mountAt(url);
    if (!mount)
        return std::nullopt;
    const Udev context(udev_new());
    const auto device = context ? deviceOfMount(*context, *mount) : nullptr;
    return device ? iconOfDevice(*device) : "drive-harddisk";
}

std::optional<bool> isVolumeBrowsable(const std::string& url)
{
    const auto mount = mountAt(url);
    return mount ? std::optional(!mount->isHidden) : std::nullopt;
}

std::shared_ptr<DiskSession> DiskSession::create()
{
    return std::make_shared<LinuxDiskSession>();
}

VolumeObserver::VolumeObserver(std::function<void(const VolumeNotification&)> handler)
{
    auto& watcher = VolumeWatcher::shared();
    watcher.observers.add(this, std::move(handler));
    watcher.start();
}

VolumeObserver::~VolumeObserver()
{
    VolumeWatcher::shared().observers.remove(this);
}

} // namespace platform
