#include "platform/linux/system/volumes/VolumeWatcher.h"

#include "platform/linux/system/queues/BlockedSignals.h"
#include "platform/linux/system/volumes/UdevHandles.h"
#include "platform/Queue.h"

#include <array>
#include <cerrno>
#include <libmount/libmount.h>
#include <memory>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>

namespace platform {

namespace {

// Drain only: devices are read on the main thread. The library would make devices of them, which it can do on one
// thread only, and the main one does.
void discardEvents(int socket)
{
    char event[8192];
    while (::recv(socket, event, sizeof event, MSG_DONTWAIT) >= 0 || errno == EINTR || errno == ENOBUFS) { }
}

} // namespace

// Opened on the main thread, and then the other one's.
class VolumeWatcher::Monitors {
public:
    // False when there is no waiting any more.
    bool waitForChange()
    {
        std::array<pollfd, 2> sources = {{{_mounts ? mnt_monitor_get_fd(_mounts.get()) : -1, POLLIN, 0},
                                          {_devices ? udev_monitor_get_fd(_devices.get()) : -1, POLLIN, 0}}};
        if (::poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR)
            return false;
        while (_mounts && mnt_monitor_next_change(_mounts.get(), nullptr, nullptr) == 0) { }
        if (_devices)
            discardEvents(udev_monitor_get_fd(_devices.get()));
        return true;
    }

private:
    struct MountDeleter {
        void operator()(libmnt_monitor* monitor) const { mnt_unref_monitor(monitor); }
    };
    using MountMonitor = std::unique_ptr<libmnt_monitor, MountDeleter>;

    static MountMonitor openMountMonitor()
    {
        MountMonitor monitor(mnt_new_monitor());
        // The options that the kernel does not know come a moment after the mount.
        if (monitor)
            mnt_monitor_enable_userspace(monitor.get(), 1, nullptr);
        return monitor && mnt_monitor_enable_kernel(monitor.get(), 1) == 0 && mnt_monitor_get_fd(monitor.get()) >= 0
            ? std::move(monitor)
            : nullptr;
    }

    // The kernel's own events, which are there without a daemon too. The name of a volume is asked of the kernel
    // anyway.
    static UdevMonitor openDeviceMonitor(udev& context)
    {
        UdevMonitor monitor(udev_monitor_new_from_netlink(&context, "kernel"));
        return monitor && udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "block", nullptr) >= 0
                && udev_monitor_enable_receiving(monitor.get()) >= 0
            ? std::move(monitor)
            : nullptr;
    }

    MountMonitor _mounts = openMountMonitor();
    Udev _context{udev_new()};
    UdevMonitor _devices = _context ? openDeviceMonitor(*_context) : nullptr;
};

VolumeWatcher& VolumeWatcher::shared()
{
    static auto& watcher = *new VolumeWatcher; // its thread may outlive main()
    return watcher;
}

void VolumeWatcher::start()
{
    if (_started)
        return;
    auto monitors = std::make_unique<Monitors>(); // before the first look, so that nothing goes unseen
    if (const auto table = MountTable::current())
        _known = volumesOfMounts(table->mounts());
    try {
        const BlockedSignals blocked;
        std::thread([this, opened = std::move(monitors)] { watch(*opened); }).detach();
        _started = true;
    } catch (const std::system_error&) {
        // Volumes are listed, but changes go unseen until another observer comes.
    }
}

void VolumeWatcher::didRead(const std::vector<Mount>& mounts)
{
    if (_started)
        _known = volumesOfMounts(mounts);
}

VolumeWatcher::Volumes VolumeWatcher::volumesOfMounts(const std::vector<Mount>& mounts)
{
    Volumes volumes;
    for (const auto& mount : mounts) {
        // Other file systems keep no snapshots here, and nobody needs to know of them.
        if (isBtrfs(mount) && mount.representsFileSystem)
            volumes[{mount.device, mount.source}] = {mount.identifier, mount.path, nameOfMount(mount), mount.isHidden};
    }
    return volumes;
}

void VolumeWatcher::watch(Monitors& monitors)
{
    ::pthread_setname_np(::pthread_self(), "volumes");
    while (monitors.waitForChange()) {
        if (!_refreshing.exchange(true))
            Queue::main()->async([this] { refresh(); });
    }
}

void VolumeWatcher::refresh()
{
    _refreshing = false;
    const auto table = MountTable::current();
    if (!table)
        return;
    const auto before = std::exchange(_known, volumesOfMounts(table->mounts()));
    const auto now = _known; // observers may read the table
    for (const auto& [key, volume] : before) {
        const auto found = now.find(key);
        tellChange(&volume, found == now.end() ? nullptr : &found->second);
    }
    for (const auto& [key, volume] : now) {
        if (!before.contains(key))
            tellChange(nullptr, &volume);
    }
}

void VolumeWatcher::tellChange(const Volume* before, const Volume* now) const
{
    using enum VolumeNotification::Event;
    // Mounted anew in the same place, it may be another disk. Those who leave out hidden volumes do not know one that
    // has come to be seen.
    const bool isNew = before && now
        && ((before->path == now->path && before->mount != now->mount) || before->isHidden != now->isHidden);
    if (before && (!now || isNew))
        observers.tell({DidUnmount, before->path, {}, {}});
    if (now && (!before || isNew))
        observers.tell({DidMount, now->path, {}, now->name});
    if (before && now && !isNew && (before->path != now->path || before->name != now->name))
        observers.tell({DidRename, now->path, before->path, now->name});
}

} // namespace platform
