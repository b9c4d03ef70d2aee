#include "helper/linux/installation/FileTree.h"

#include "helper/linux/installation/OpenFolder.h"
#include "platform/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace helper {

using platform::FileDescriptor;

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

std::expected<void, int> removeEntries(const OpenFolder& folder);

std::expected<void, int> removeEntry(const OpenFolder& folder, const OpenFolder::Entry& entry)
{
    if (entry.isFolder) {
        const auto inner = folder.folder(entry.name);
        if (!inner)
            return std::unexpected(inner.error());
        if (auto removed = removeEntries(*inner); !removed)
            return removed;
    }
    if (::unlinkat(folder.descriptor(), entry.name.c_str(), entry.isFolder ? AT_REMOVEDIR : 0) != 0)
        return std::unexpected(errno);
    return {};
}

std::expected<void, int> removeEntries(const OpenFolder& folder)
{
    const auto entries = folder.entries();
    if (!entries)
        return std::unexpected(entries.error());
    std::expected<void, int> first;
    for (const auto& entry : *entries) {
        const auto removed = removeEntry(folder, entry);
        if (!removed && first)
            first = removed;
    }
    return first;
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
    auto opened = OpenFolder::at(folder);
    if (!opened)
        return opened.error() == ENOENT ? std::expected<void, int>() : std::unexpected(opened.error());
    auto removed = removeEntries(*opened);
    if (removed && ::rmdir(folder.c_str()) != 0)
        removed = std::unexpected(errno);
    return removed;
}

std::expected<void, int> syncTree(const std::string& folder)
{
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor || ::syncfs(descriptor.get()) != 0)
        return std::unexpected(errno);
    return {};
}

} // namespace helper
