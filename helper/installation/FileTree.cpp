#include "helper/installation/FileTree.h"

#include "platform/Folder.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <system_error>

namespace helper {

namespace {

constexpr int maximumDepth = 64;

// The next name of a path, which is shortened by it.
std::string_view takeName(std::string_view& path)
{
    auto slash = path.find('/');
    auto name = path.substr(0, slash);
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    return name;
}

} // namespace

bool isPathInside(std::string_view path)
{
    if (path.empty() || path.size() >= PATH_MAX || path.ends_with('/') || path.find('\0') != std::string_view::npos)
        return false;
    for (int depth = 0; !path.empty(); ++depth) {
        auto name = takeName(path);
        if (name.empty() || name == "." || name == ".." || name.size() > NAME_MAX || depth == maximumDepth)
            return false;
    }
    return true;
}

// Steps upwards come first or not at all: after a name they would start from wherever that name, a link itself, leads.
bool isLinkInside(std::string_view path, std::string_view target)
{
    auto height = std::ranges::count(path, '/');
    for (; target.starts_with("../"); target.remove_prefix(3))
        --height;
    return height >= 0 && isPathInside(target);
}

std::expected<void, int> removeTree(const std::string& folder)
{
    const auto removed = platform::removeFolder(folder);
    return removed || removed.error() == ENOENT ? std::expected<void, int>() : removed;
}

std::expected<void, int> syncFolders(const std::string& folder)
{
    std::error_code failure;
    for (std::filesystem::recursive_directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        if (at->symlink_status().type() != std::filesystem::file_type::directory)
            continue;
        if (auto synced = platform::syncFolder(at->path()); !synced)
            return synced;
    }
    if (failure)
        return std::unexpected(failure.value());
    return platform::syncFolder(folder);
}

} // namespace helper
