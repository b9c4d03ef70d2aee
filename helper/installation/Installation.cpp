#include "helper/installation/Installation.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/installation/FileTree.h"
#include "helper/installation/SystemError.h"
#include "helper/update/VersionNumber.h"
#include "platform/Folder.h"
#include "platform/linux/system/files/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

using platform::Result;

namespace {

constexpr const char* stagingName = "Library/.com.zerkolin.brevane.update";

std::unexpected<platform::Error> failed(int code, const std::string& path, const char* what)
{
    return std::unexpected(systemError(code, "'" + path + "' could not be " + what + "."));
}

std::string parentOf(const std::string& path)
{
    return path.substr(0, path.rfind('/'));
}

std::optional<std::string> linkAt(const std::string& path)
{
    std::array<char, PATH_MAX> target{};
    auto length = ::readlink(path.c_str(), target.data(), target.size());
    return length < 0 ? std::nullopt : std::optional(std::string(target.data(), static_cast<std::size_t>(length)));
}

// Failures to clean up are only logged; the new version is in place.
void logFailure(const std::expected<void, int>& done, const std::string& path)
{
    if (!done)
        ZRKLogMessage(LogLevelError, "%@",
                      {platform::localizedDescription(failed(done.error(), path, "tidied").error())});
}

// The paths below the folder of everything but folders.
std::set<std::string> filesIn(const std::string& folder)
{
    std::set<std::string> found;
    std::error_code failure;
    for (std::filesystem::recursive_directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        if (at->symlink_status().type() != std::filesystem::file_type::directory)
            found.insert(at->path().string().substr(folder.size() + 1));
    }
    return found;
}

// Moves files that the old list does not name; never overwrites.
void carryOver(const std::string& from, const std::string& to)
{
    auto manifest = InstallationManifest::inFolder(from);
    if (!manifest)
        return;
    auto foreign = filesIn(from);
    foreign.erase(InstallationManifest::fileName);
    for (const auto& file : manifest->files)
        foreign.erase(file);
    for (const auto& file : foreign) {
        std::error_code failure;
        auto target = std::filesystem::path(to) / file;
        std::filesystem::create_directories(target.parent_path(), failure);
        if (::renameat2(AT_FDCWD, (from + "/" + file).c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) != 0)
            logFailure(std::unexpected(errno), from + "/" + file);
    }
}

} // namespace

Installation::Installation() : _root(platform::systemRoot()) { }

std::optional<InstallationManifest> Installation::manifest() const
{
    return InstallationManifest::inFolder(product());
}

std::string Installation::stagingFolder() const
{
    return path(stagingName);
}

Result<void> Installation::beginStaging() const
{
    if (auto removed = removeTree(stagingFolder()); !removed)
        return failed(removed.error(), stagingFolder(), "removed");
    if (::mkdir(stagingFolder().c_str(), 0700) != 0 || ::mkdir(stagedProduct().c_str(), 0755) != 0)
        return failed(errno, stagingFolder(), "made");
    return {};
}

Result<InstallationManifest> Installation::checkStaged() const
{
    auto staged = InstallationManifest::inFolder(stagedProduct());
    auto found = filesIn(stagedProduct());
    bool isWhole = staged && found.erase(InstallationManifest::fileName) == 1
        && std::ranges::all_of(staged->files, [&](const auto& file) { return found.erase(file) == 1; });
    if (!isWhole || !found.empty())
        return std::unexpected(systemError(EBADMSG, "The package does not hold what its list says."));
    return std::move(*staged);
}

Result<void> Installation::makeFolders(const std::string& link, InstallationManifest& staged) const
{
    for (auto slash = link.find('/'); slash != std::string::npos; slash = link.find('/', slash + 1)) {
        auto folder = link.substr(0, slash);
        if (::mkdir(path(folder).c_str(), 0755) == 0)
            staged.folders.push_back(folder);
        else if (errno != EEXIST)
            return failed(errno, path(folder), "made");
    }
    return {};
}

// Before the step: until then a new link leads nowhere, or to the same file of the old version.
Result<void> Installation::makeLinks(InstallationManifest& staged) const
{
    for (const auto& [link, target] : staged.links) {
        auto place = path(link);
        if (auto made = makeFolders(link, staged); !made)
            return made;
        if (linkAt(place) == target)
            continue;
        auto beside = stagingFolder() + "/link";
        ::unlink(beside.c_str());
        if (::symlink(target.c_str(), beside.c_str()) != 0 || ::rename(beside.c_str(), place.c_str()) != 0)
            return failed(errno, place, "made");
        if (auto synced = platform::syncFolder(parentOf(place)); !synced)
            return failed(synced.error(), place, "made");
    }
    return {};
}

void Installation::removeLinks(const InstallationManifest& of, const InstallationManifest* but) const
{
    for (const auto& [link, target] : of.links) {
        bool isKept = but && std::ranges::any_of(but->links, [&](const auto& kept) { return kept.first == link; });
        if (!isKept && linkAt(path(link)) == target)
            ::unlink(path(link).c_str());
    }
}

Result<void> Installation::replace(InstallationManifest staged) const
{
    if (auto current = manifest())
        staged.folders = current->folders;
    if (auto made = makeLinks(staged); !made)
        return made;
    if (auto written = staged.writeToFolder(stagedProduct()); !written)
        return written;
    if (auto synced = syncFolders(stagingFolder()); !synced)
        return failed(synced.error(), stagingFolder(), "written");
    if (::renameat2(AT_FDCWD, stagedProduct().c_str(), AT_FDCWD, product().c_str(), RENAME_EXCHANGE) != 0)
        return failed(errno, product(), "replaced");
    for (const auto& folder : {parentOf(product()), stagingFolder()})
        logFailure(platform::syncFolder(folder), folder);
    endReplacement();
    return {};
}

void Installation::endReplacement() const
{
    auto current = manifest();
    auto other = InstallationManifest::inFolder(stagedProduct());
    bool isReplaced = current && other && VersionNumber::parse(other->version) < VersionNumber::parse(current->version);
    if (isReplaced) {
        carryOver(stagedProduct(), product());
        removeLinks(*other, &*current);
    }
    logFailure(removeTree(stagingFolder()), stagingFolder());
}

bool Installation::isInterrupted() const
{
    return platform::fileExists(stagingFolder());
}

} // namespace helper
