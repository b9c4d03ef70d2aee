#include "helper/linux/installation/ReplacedVersion.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/installation/InstallationManifest.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace helper {

namespace {

constexpr int maximumNamesakes = 9;

std::string inside(const std::string& path, const std::string& name)
{
    return path.empty() ? name : path + "/" + name;
}

} // namespace

std::vector<ReplacedVersion::Remainder> ReplacedVersion::clear()
{
    const auto folder = OpenFolder::at(_folder);
    if (!folder)
        return {{_folder, folder.error()}};
    const auto list = InstallationManifest::inFolder(_folder);
    if (list) {
        _files = {list->files.begin(), list->files.end()};
        const auto folders = list->innerFolders();
        _folders = {folders.begin(), folders.end()};
        clearFolder(*folder, "");
    }
    if (!_remainders.empty())
        return _remainders;
    // Without a list nobody knows whose the rest is.
    if (list && ::unlinkat(folder->descriptor(), InstallationManifest::fileName, 0) != 0)
        stays(InstallationManifest::fileName, errno);
    else if (::rmdir(_folder.c_str()) != 0)
        stays("", errno);
    return _remainders;
}

void ReplacedVersion::stays(const std::string& path, int failure)
{
    _remainders.push_back({path.empty() ? _folder : _folder + "/" + path, failure});
}

void ReplacedVersion::clearFolder(const OpenFolder& folder, const std::string& path)
{
    const auto entries = folder.entries();
    if (!entries) {
        stays(path, entries.error());
        return;
    }
    for (const auto& entry : *entries) {
        if (!path.empty() || entry.name != InstallationManifest::fileName)
            clearEntry(folder, entry, inside(path, entry.name));
    }
}

void ReplacedVersion::clearEntry(const OpenFolder& folder, const OpenFolder::Entry& entry, const std::string& path)
{
    if (!entry.isFolder && _files.contains(path)) {
        if (::unlinkat(folder.descriptor(), entry.name.c_str(), 0) != 0)
            stays(path, errno);
        return;
    }
    if (!entry.isFolder || !_folders.contains(path)) {
        move(folder, entry.name, path);
        return;
    }
    const auto inner = folder.folder(entry.name);
    if (!inner) {
        stays(path, inner.error());
        return;
    }
    const auto before = _remainders.size();
    clearFolder(*inner, path);
    if (_remainders.size() == before && ::unlinkat(folder.descriptor(), entry.name.c_str(), AT_REMOVEDIR) != 0)
        stays(path, errno);
}

// To the same place, with the folders on the way.
void ReplacedVersion::move(const OpenFolder& folder, const std::string& name, const std::string& path)
{
    auto target = OpenFolder::at(_product);
    for (std::size_t start = 0, slash = 0; target && (slash = path.find('/', start)) != std::string::npos;
         start = slash + 1)
        target = target->madeFolder(path.substr(start, slash - start));
    if (!target)
        stays(path, target.error());
    else
        moveInto(*target, folder, name, path);
}

void ReplacedVersion::moveInto(const OpenFolder& target, const OpenFolder& folder, const std::string& name,
                               const std::string& path)
{
    if (::renameat2(folder.descriptor(), name.c_str(), target.descriptor(), name.c_str(), RENAME_NOREPLACE) == 0)
        return;
    if (errno != EEXIST) {
        stays(path, errno);
        return;
    }
    if (!folder.holdsFolder(name) || !target.holdsFolder(name)) {
        moveBeside(target, folder, name, path);
        return;
    }
    const auto from = folder.folder(name);
    const auto to = target.folder(name);
    if (!from || !to) {
        stays(path, from ? to.error() : from.error());
        return;
    }
    const auto entries = from->entries();
    if (!entries) {
        stays(path, entries.error());
        return;
    }
    const auto before = _remainders.size();
    for (const auto& entry : *entries)
        moveInto(*to, *from, entry.name, path + "/" + entry.name);
    if (_remainders.size() == before && ::unlinkat(folder.descriptor(), name.c_str(), AT_REMOVEDIR) != 0)
        stays(path, errno);
}

// The version that is there now has something else of that name.
void ReplacedVersion::moveBeside(const OpenFolder& target, const OpenFolder& folder, const std::string& name,
                                 const std::string& path)
{
    for (int number = 1; number <= maximumNamesakes; ++number) {
        const auto suffix = number == 1 ? std::string(".kept") : ".kept-" + std::to_string(number);
        if (::renameat2(folder.descriptor(), name.c_str(), target.descriptor(), (name + suffix).c_str(),
                        RENAME_NOREPLACE)
            == 0) {
            ZRKLogMessage(LogLevelDefault, "The new version has a '%@' of its own; what was there is now '%@'.",
                          {_product + "/" + path, _product + "/" + path + suffix});
            return;
        }
        if (errno != EEXIST)
            break;
    }
    stays(path, errno);
}

} // namespace helper
