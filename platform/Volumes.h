#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Mounted volumes. A volume's URL is the path of its mount point without a slash at the end (the root is "/"). Main
// thread only.

struct MountedFileSystem {
    static constexpr std::uint32_t Local = 0x1000; // not over a network

    std::string path;
    std::uint32_t flags = 0;
};

// Below 1 when the system does not tell.
int numberOfMountedFileSystems();
// In the order of the system's table, at most `room`; none when the system does not tell.
std::vector<MountedFileSystem> mountedFileSystems(int room);

// nullopt where it cannot be read.
std::optional<std::string> localizedVolumeName(const std::string& url);
// What ui::Image::imageNamed takes.
std::optional<std::string> effectiveVolumeIcon(const std::string& url);
// Whether the volume is meant to be seen by its user.
std::optional<bool> isVolumeBrowsable(const std::string& url);

// What the system's registry of devices says of the device that a volume is on.
struct VolumeService {
    bool isSnapshotVolume = false;    // of the kind of file system that keeps snapshots
    std::optional<PropertyList> role; // the "Role" property as it is
};

// The access to that registry.
class DiskSession {
public:
    static std::shared_ptr<DiskSession> create();
    virtual ~DiskSession() = default;
    // nullopt when the volume has no disk, the disk no name, or its name no entry.
    virtual std::optional<VolumeService> serviceOfVolume(const std::string& url) = 0;
};

struct VolumeNotification {
    enum class Event { DidMount, DidUnmount, DidRename };

    Event event = Event::DidMount;
    std::string volumeURL;
    std::string oldVolumeURL;  // DidRename: the same when only the name changed
    std::string localizedName; // DidMount and DidRename
};

// Runs the handler for every change while it lives.
class VolumeObserver {
public:
    explicit VolumeObserver(std::function<void(const VolumeNotification&)> handler);
    ~VolumeObserver();
    VolumeObserver(const VolumeObserver&) = delete;
    VolumeObserver& operator=(const VolumeObserver&) = delete;
};

} // namespace platform
