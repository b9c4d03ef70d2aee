#include "helper/linux/backupd/BackupConfinement.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/mount.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace helper {

namespace {

bool setAttributes(const char* path, unsigned flags, std::uint64_t set, std::uint64_t cleared)
{
    mount_attr attributes{};
    attributes.attr_set = set;
    attributes.attr_clr = cleared;
    return ::syscall(SYS_mount_setattr, AT_FDCWD, path, flags, &attributes, sizeof attributes) == 0;
}

// A mount of its own, which can then be written to where the rest cannot.
bool keepWritable(const char* folder)
{
    return ::mount(folder, folder, nullptr, MS_BIND | MS_REC, nullptr) == 0 || errno == ENOENT;
}

bool makeWritable(const char* folder)
{
    return setAttributes(folder, 0, 0, MOUNT_ATTR_RDONLY) || errno == ENOENT;
}

} // namespace

BackupConfinement::BackupConfinement(std::vector<std::string> disks, std::vector<std::string> folders)
    : _disks(std::move(disks)),
      _folders(std::move(folders))
{
}

int BackupConfinement::apply() const
{
    if (_disks.empty())
        return 0;
    // Mounts that go away outside go away here too, so that a disk is never held by surprise.
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) != 0)
        return errno;
    for (const auto& folder : _folders) {
        if (!keepWritable(folder.c_str()))
            return errno;
    }
    if (!setAttributes("/", AT_RECURSIVE, MOUNT_ATTR_RDONLY, 0))
        return errno;
    for (const auto& folder : _folders) {
        if (!makeWritable(folder.c_str()))
            return errno;
    }
    for (const auto& disk : _disks) {
        constexpr std::uint64_t strict =
            MOUNT_ATTR_NOSYMFOLLOW | MOUNT_ATTR_NOSUID | MOUNT_ATTR_NODEV | MOUNT_ATTR_NOEXEC;
        if (!setAttributes(disk.c_str(), AT_RECURSIVE | AT_SYMLINK_NOFOLLOW, strict, MOUNT_ATTR_RDONLY))
            return errno;
    }
    return 0;
}

} // namespace helper
