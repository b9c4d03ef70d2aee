#pragma once

#include "platform/linux/system/volumes/MountTable.h"
#include "platform/ObserverList.h"
#include "platform/Volumes.h"

#include <atomic>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// Follows the mount table from the first observer on: a thread of its own sleeps until the system tells of a change,
// and the main thread then finds out what is different. Main thread only but for that thread.
class VolumeWatcher {
public:
    static VolumeWatcher& shared();

    ObserverList<VolumeNotification> observers;

    void start();
    // The table as somebody has just seen it; what it shows is no news any more.
    void didRead(const std::vector<Mount>& mounts);

private:
    struct Volume {
        int mount = 0;
        std::string path;
        std::string name;
        bool isHidden = false;
    };
    // A file system is one volume however often it is mounted: by its device and source.
    using Key = std::pair<std::uint64_t, std::string>;
    using Volumes = std::map<Key, Volume>;

    static Volumes volumesOfMounts(const std::vector<Mount>& mounts);
    class Monitors;
    void watch(Monitors& monitors);
    void refresh();
    void tellChange(const Volume* before, const Volume* now) const;

    bool _started = false;
    Volumes _known;
    std::atomic<bool> _refreshing = false;
};

} // namespace platform
