#include "helper/linux/installation/Installation.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/installation/FileTree.h"
#include "helper/linux/installation/OpenFolder.h"
#include "helper/linux/installation/ReplacedVersion.h"
#include "helper/SystemError.h"
#include "helper/update/VersionNumber.h"
#include "platform/Folder.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace helper {

using platform::FileDescriptor;
using platform::Result;

namespace {

constexpr std::string_view replacedPrefix = ".com.zerkolin.brevane.replaced-";
constexpr std::chrono::milliseconds askAgain{10};
constexpr std::size_t maximumNamed = 20; // in the log, of what stays

std::unexpected<platform::Error> failed(int code, const std::string& path, const char* what)
{
    return std::unexpected(systemError(code, "'" + path + "' could not be " + what + "."));
}

std::optional<std::string> linkAt(const std::string& path)
{
    std::array<char, PATH_MAX> target{};
    auto length = ::readlink(path.c_str(), target.data(), target.size());
    return length < 0 ? std::nullopt : std::optional(std::string(target.data(), static_cast<std::size_t>(length)));
}

void log(int code, const std::string& path, const char* what)
{
    ZRKLogMessage(LogLevelError, "%@", {platform::localizedDescription(failed(code, path, what).error())});
}

// Failures to clean up are only logged; the new version is in place.
void logFailure(const std::expected<void, int>& done, const std::string& path)
{
    if (!done)
        log(done.error(), path, "tidied");
}

void collectFiles(const OpenFolder& folder, const std::string& prefix, std::set<std::string>& found)
{
    for (const auto& entry : folder.entries().value_or(std::vector<OpenFolder::Entry>())) {
        if (!entry.isFolder)
            found.insert(prefix + entry.name);
        else if (const auto inner = folder.folder(entry.name))
            collectFiles(*inner, prefix + entry.name + "/", found);
    }
}

// The paths below the folder of everything but folders.
std::set<std::string> filesIn(const std::string& path)
{
    std::set<std::string> found;
    if (const auto folder = OpenFolder::at(path))
        collectFiles(*folder, "", found);
    return found;
}

bool isOlder(const InstallationManifest& one, const InstallationManifest& other)
{
    return VersionNumber::parse(one.version) < VersionNumber::parse(other.version);
}

} // namespace

Installation::Installation() : _root(platform::systemRoot()) { }

std::optional<InstallationManifest> Installation::manifest() const
{
    return InstallationManifest::inFolder(product());
}

std::string Installation::stagingFolder() const
{
    return path(InstallationManifest::stagingFolder);
}

Result<void> Installation::beginStaging() const
{
    settle();
    if (platform::fileExists(stagingFolder()))
        return failed(ENOTEMPTY, stagingFolder(), "removed");
    if (::mkdir(stagingFolder().c_str(), 0700) != 0 || ::mkdir(stagedProduct().c_str(), 0755) != 0)
        return failed(errno, stagingFolder(), "made");
    return {};
}

Result<InstallationManifest> Installation::checkStaged() const
{
    auto staged = InstallationManifest::inFolder(stagedProduct());
    auto found = filesIn(stagedProduct());
    bool isWhole = staged && found.erase(InstallationManifest::fileName) == 1
        && std::ranges::all_of(
                       staged->links,
                       [&](const auto& link) { return found.contains(InstallationManifest::fileOfLink(link.first)); })
        && std::ranges::all_of(staged->files, [&](const auto& file) { return found.erase(file) == 1; });
    if (!isWhole || !found.empty())
        return std::unexpected(systemError(EBADMSG, "The package does not hold what its list says."));
    return std::move(*staged);
}

// The folders that the version's links need and that are not there, outer ones first.
std::vector<std::string> Installation::missingFolders(const InstallationManifest& staged) const
{
    std::vector<std::string> missing;
    for (const auto& [link, target] : staged.links) {
        for (auto slash = link.find('/'); slash != std::string::npos; slash = link.find('/', slash + 1)) {
            const auto folder = link.substr(0, slash);
            if (!platform::fileExists(path(folder)) && std::ranges::find(missing, folder) == missing.end())
                missing.push_back(folder);
        }
    }
    return missing;
}

Result<void> Installation::makeReady(InstallationManifest staged) const
{
    staged.folders = missingFolders(staged);
    if (auto current = manifest())
        staged.folders.insert(staged.folders.begin(), current->folders.begin(), current->folders.end());
    if (auto written = staged.writeToFolder(stagedProduct()); !written)
        return written;
    if (auto synced = syncTree(stagingFolder()); !synced)
        return failed(synced.error(), stagingFolder(), "written");
    if (::rename(stagedProduct().c_str(), otherProduct().c_str()) != 0)
        return failed(errno, stagedProduct(), "moved");
    return {};
}

// Nothing outside of the two folders changes before the step. The links that both versions have lead through the folder
// that is exchanged; the others come and go after it, and again at the next start if that was interrupted.
Result<void> Installation::exchange() const
{
    const auto other = InstallationManifest::inFolder(otherProduct());
    const auto current = manifest();
    if (!other || !current)
        return failed(ENOENT, otherProduct(), "put in place");
    if (::renameat2(AT_FDCWD, otherProduct().c_str(), AT_FDCWD, product().c_str(), RENAME_EXCHANGE) != 0)
        return failed(errno, product(), "replaced");
    for (const auto& folder : {platform::parentOf(product()), stagingFolder()})
        logFailure(platform::syncFolder(folder), folder);
    settleLinks(*other, *current);
    return {};
}

void Installation::makeLink(const std::string& link) const
{
    for (auto slash = link.find('/'); slash != std::string::npos; slash = link.find('/', slash + 1))
        (void)::mkdir(path(link.substr(0, slash)).c_str(), 0755);
    const auto place = path(link);
    const auto target = InstallationManifest::targetOfLink(link);
    if (linkAt(place) == target)
        return;
    if (::symlink(target.c_str(), place.c_str()) != 0)
        log(errno, place, "made"); // also when it is somebody else's
    else
        logFailure(platform::syncFolder(platform::parentOf(place)), place);
}

void Installation::settleLinks(const InstallationManifest& current, const InstallationManifest& other) const
{
    for (const auto& link : other.links) {
        if (std::ranges::find(current.links, link) == current.links.end() && linkAt(path(link.first)) == link.second
            && ::unlink(path(link.first).c_str()) != 0)
            log(errno, path(link.first), "removed");
    }
    for (const auto& [link, target] : current.links)
        makeLink(link);
    auto folders = other.folders;
    std::ranges::sort(folders, std::greater<>());
    for (const auto& folder : folders) {
        if (folder != "." && std::ranges::find(current.folders, folder) == current.folders.end())
            (void)::rmdir(path(folder).c_str());
    }
}

std::vector<std::string> Installation::replacedFolders() const
{
    std::vector<std::string> found;
    const auto folder = OpenFolder::at(platform::parentOf(product()));
    const auto entries = folder ? folder->entries() : std::unexpected(folder.error());
    for (const auto& entry : entries.value_or(std::vector<OpenFolder::Entry>())) {
        if (entry.name.starts_with(replacedPrefix))
            found.push_back(platform::parentOf(product()) + "/" + entry.name);
    }
    return found;
}

Installation::State Installation::state() const
{
    const auto other = InstallationManifest::inFolder(otherProduct());
    const auto current = manifest();
    if (other && current && isOlder(*other, *current))
        return State::OnTrial;
    const bool isSettled = !platform::fileExists(stagingFolder()) && replacedFolders().empty();
    return isSettled ? State::Settled : State::Unfinished;
}

// From then on it is never put in place again.
void Installation::retireOther() const
{
    if (!platform::fileExists(otherProduct()))
        return;
    for (int number = 1;; ++number) {
        const auto name = platform::parentOf(product()) + "/" + std::string(replacedPrefix) + std::to_string(number);
        if (::renameat2(AT_FDCWD, otherProduct().c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0)
            return;
        if (errno != EEXIST) {
            log(errno, otherProduct(), "moved");
            return;
        }
    }
}

void Installation::clearReplaced() const
{
    for (const auto& folder : replacedFolders()) {
        const auto remainders = ReplacedVersion(folder, product()).clear();
        for (std::size_t index = 0; index < std::min(remainders.size(), maximumNamed); ++index)
            log(remainders[index].failure, remainders[index].path, "moved to the new version, and stays where it is");
        if (remainders.size() > maximumNamed)
            ZRKLogMessage(LogLevelError, "%d more stay in '%@'.", {remainders.size() - maximumNamed, folder});
    }
}

void Installation::settle() const
{
    const auto other = InstallationManifest::inFolder(otherProduct());
    const auto current = manifest();
    if (other && current)
        settleLinks(*current, *other);
    retireOther();
    clearReplaced();
    // What is left there was never in place.
    if (!platform::fileExists(otherProduct()))
        logFailure(removeTree(stagingFolder()), stagingFolder());
}

Result<void> Installation::takeBack() const
{
    if (state() != State::OnTrial)
        return {};
    if (auto exchanged = exchange(); !exchanged)
        return exchanged;
    retireOther();
    return {};
}

bool Installation::waitForTrial(std::chrono::milliseconds limit) const
{
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;; std::this_thread::sleep_for(askAgain)) {
        const auto locked = lock();
        if (locked || locked.error() != EWOULDBLOCK)
            return true;
        if (std::chrono::steady_clock::now() >= end)
            return false;
    }
}

std::expected<FileDescriptor, int> Installation::lock() const
{
    FileDescriptor folder(::open(stagingFolder().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder || ::flock(folder.get(), LOCK_EX | LOCK_NB) != 0)
        return std::unexpected(errno);
    return folder;
}

} // namespace helper
