#include "helper/linux/installation/InstallationManifest.h"

#include "helper/linux/installation/FileTree.h"
#include "helper/SystemError.h"
#include "helper/update/VersionNumber.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace helper {

using platform::Array;
using platform::Dictionary;

namespace {

std::string pathIn(const std::string& folder)
{
    return folder + "/" + InstallationManifest::fileName;
}

// Links stand where programs and services are looked for, and nowhere that settings or anybody's files are.
bool isLinkPlace(const std::string& path)
{
    return isPathInside(path) && (path.starts_with("usr/") || path.starts_with("Library/LaunchDaemons/"));
}

bool readPaths(const Array* values, std::vector<std::string>& paths)
{
    for (const auto& value : values ? *values : Array()) {
        const auto* path = value.string();
        if (!path || (!isPathInside(*path) && *path != "."))
            return false;
        paths.push_back(*path);
    }
    return true;
}

std::optional<InstallationManifest> read(const Dictionary& record)
{
    const auto* version = record.stringForKey("Version");
    const auto* humanVersion = record.stringForKey("HumanVersion");
    if (!version || !humanVersion || !VersionNumber::parse(*version))
        return std::nullopt;
    InstallationManifest manifest{*version, *humanVersion, {}, {}, {}, {}};
    if (const auto* package = record.stringForKey("Package"))
        manifest.package = *package;
    if (!readPaths(record.arrayForKey("Files"), manifest.files)
        || !readPaths(record.arrayForKey("Folders"), manifest.folders)
        || std::ranges::find(manifest.files, ".") != manifest.files.end())
        return std::nullopt;
    const auto* links = record.dictionaryForKey("Links");
    for (const auto& [path, target] : links ? *links : Dictionary()) {
        if (!isLinkPlace(path) || !target.string() || *target.string() != InstallationManifest::targetOfLink(path))
            return std::nullopt;
        manifest.links.emplace_back(path, *target.string());
    }
    return manifest;
}

Array arrayOf(const std::vector<std::string>& texts)
{
    return {texts.begin(), texts.end()};
}

} // namespace

std::optional<InstallationManifest> InstallationManifest::inFolder(const std::string& folder)
{
    auto bytes = platform::readFile(pathIn(folder));
    if (!bytes)
        return std::nullopt;
    auto value = platform::propertyListWithData(*bytes);
    return value && value->dictionary() ? read(*value->dictionary()) : std::nullopt;
}

platform::Result<void> InstallationManifest::writeToFolder(const std::string& folder) const
{
    Dictionary targets;
    for (const auto& [path, target] : links)
        targets.set(path, target);
    auto bytes = platform::binaryPropertyList(Dictionary{{"Version", version},
                                                         {"HumanVersion", humanVersion},
                                                         {"Files", arrayOf(files)},
                                                         {"Links", std::move(targets)},
                                                         {"Folders", arrayOf(folders)}});
    if (!bytes)
        return std::unexpected(std::move(bytes.error()));
    if (auto written = platform::replaceFile(pathIn(folder), *bytes); !written)
        return std::unexpected(systemError(written.error(), "'" + pathIn(folder) + "' could not be written."));
    return {};
}

std::string InstallationManifest::fileOfLink(const std::string& path)
{
    return path.substr(path.find('/') + 1);
}

std::string InstallationManifest::targetOfLink(const std::string& path)
{
    std::string way;
    for (auto height = std::ranges::count(path, '/'); height > 0; --height)
        way += "../";
    const std::string_view shared = "Library/";
    std::string folder = productFolder;
    if (path.starts_with(shared)) { // beside the product's own folder the way is shorter
        way.erase(0, 3);
        folder.erase(0, shared.size());
    }
    return way + folder + "/" + fileOfLink(path);
}

std::vector<std::string> InstallationManifest::innerFolders() const
{
    std::set<std::string, std::greater<>> found; // what is inside of a folder comes before it
    for (const auto& file : files) {
        for (auto slash = file.rfind('/'); slash != std::string::npos && slash > 0; slash = file.rfind('/', slash - 1))
            found.insert(file.substr(0, slash));
    }
    return {found.begin(), found.end()};
}

} // namespace helper
