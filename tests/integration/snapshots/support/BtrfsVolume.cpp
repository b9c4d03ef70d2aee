#include "tests/integration/snapshots/support/BtrfsVolume.h"

#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <unistd.h>

namespace {

bool hasProgram(const char* name)
{
    for (const char* const folder : {"/usr/bin/", "/usr/sbin/", "/bin/", "/sbin/"}) {
        if (::access((std::string(folder) + name).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

std::string findReason()
{
    if (::geteuid() != 0)
        return "only root can mount file systems";
    if (!hasProgram("mkfs.btrfs") || !hasProgram("btrfs"))
        return "btrfs-progs are not installed";
    if (::access("/dev/loop-control", R_OK | W_OK) != 0)
        return "there are no loop devices";
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return "no mount namespace can be had";
    try {
        const BtrfsVolume trial("Trial");
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

} // namespace

std::vector<std::string> linesOf(const std::vector<std::string>& command)
{
    ChildProcess child(command, {{"LC_ALL", "C"}});
    std::vector<std::string> lines;
    while (auto line = child.readLine(60'000))
        lines.push_back(*line);
    if (child.wait() != 0) {
        std::string text;
        for (const auto& word : command)
            text += word + " ";
        throw std::runtime_error(text + "failed");
    }
    return lines;
}

std::string reasonWithoutBtrfs()
{
    static const std::string reason = findReason();
    return reason;
}

BtrfsVolume::BtrfsVolume(const std::string& label, unsigned megabytes) : _path(_directory.file("mounted"))
{
    const auto image = _directory.write("image", "");
    std::filesystem::resize_file(image, std::uintmax_t(megabytes) << 20);
    std::filesystem::create_directory(_path);
    std::vector<std::string> command{"mkfs.btrfs", "-q", "-f"};
    if (!label.empty())
        command.insert(command.end(), {"-L", label});
    command.push_back(image);
    run(command);
    mount();
}

BtrfsVolume::~BtrfsVolume()
{
    if (!_device.empty())
        ::umount2(_path.c_str(), MNT_DETACH);
}

void BtrfsVolume::mount()
{
    run({"mount", "-t", "btrfs", "-o", "loop", _directory.file("image"), _path});
    _device = linesOf({"findmnt", "-n", "-o", "SOURCE", "--mountpoint", _path}).at(0);
}

void BtrfsVolume::unmount()
{
    run({"umount", _path});
    _device.clear();
}

void BtrfsVolume::announceChange() const
{
    std::ofstream("/sys/class/block/" + _device.substr(_device.rfind('/') + 1) + "/uevent") << "change";
}

void BtrfsVolume::createSubvolume(const std::string& name) const
{
    run({"btrfs", "subvolume", "create", file(name)});
}

void BtrfsVolume::createSnapshot(const std::string& source, const std::string& name, bool isReadOnly) const
{
    std::vector<std::string> command{"btrfs", "subvolume", "snapshot"};
    if (isReadOnly)
        command.emplace_back("-r");
    command.insert(command.end(), {file(source), file(name)});
    run(command);
}

std::string BtrfsVolume::folder(const std::string& name) const
{
    std::filesystem::create_directories(file(name));
    return file(name);
}

std::vector<ListedSnapshot> snapshotsListedByTool(const std::string& path)
{
    std::vector<ListedSnapshot> listed;
    for (const auto& line : linesOf({"btrfs", "subvolume", "list", "-s", path})) {
        const auto time = line.find(" otime ");
        const auto place = line.find(" path ");
        if (time == std::string::npos || place == std::string::npos)
            throw std::runtime_error("not understood: " + line);
        listed.push_back({line.substr(time + 7, 19), line.substr(place + 6)});
    }
    return listed;
}
