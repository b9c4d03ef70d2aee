#include "platform/linux/system/conditions/SystemFiles.h"

#include "platform/AtomicFile.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr std::size_t attributeLimit = 4096;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

} // namespace

std::string firstLine(const std::string& path)
{
    const auto bytes = readFile(path, attributeLimit);
    if (!bytes)
        return {};
    const std::string text(bytes->begin(), bytes->end());
    return text.substr(0, text.find('\n'));
}

std::vector<std::string> namesInFolder(const std::string& path)
{
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
    std::vector<std::string> names;
    while (const auto* const entry = folder ? ::readdir(folder.get()) : nullptr) {
        std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(std::move(name));
    }
    std::ranges::sort(names);
    return names;
}

std::string machinePath(const std::string& path)
{
    auto sandboxed = systemPath(path);
    struct stat status{};
    return usesSandboxStore() && ::lstat(sandboxed.c_str(), &status) == 0 ? sandboxed : path;
}

} // namespace platform
