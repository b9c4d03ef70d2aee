#pragma once

#include "platform/Volumes.h"

#include <optional>
#include <string>

// Mounted volumes. Main thread only.
namespace scripted::volumes {

struct Volume {
    std::string path;
    std::uint32_t flags = platform::MountedFileSystem::Local;
    std::optional<std::string> name = "Volume";
    std::optional<std::string> icon = "drive-harddisk";
    std::optional<bool> browsable = true;
    std::optional<platform::VolumeService> service = platform::VolumeService{.isSnapshotVolume = true, .role = {}};
};

void reset(); // nothing is mounted

// It is mounted already.
void add(Volume volume);
// What number the system tells in place of the true one, and whether it then tells the file systems.
void setTable(int count, bool isReadable);
int timesRead(); // of the table, since reset()

// The observers have run when these return.
void mount(const Volume& volume);
void unmount(const std::string& path);
void rename(const std::string& oldPath, const std::string& path, const std::string& name);

} // namespace scripted::volumes
