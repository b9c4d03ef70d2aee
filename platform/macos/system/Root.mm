#include "platform/Root.h"

#include <climits>
#include <unistd.h>

namespace platform {

namespace {

std::string& fixedRoot()
{
    // Never destroyed, since threads may still log while the process ends.
    static auto& root = *new std::string;
    return root;
}

} // namespace

const char* installedRoot()
{
    return "/";
}

void setSystemRoot(const std::string& path)
{
    char folder[PATH_MAX];
    const bool isRelative = !path.starts_with('/') && ::getcwd(folder, sizeof folder);
    fixedRoot() = isRelative ? std::string(folder) + "/" + path : path;
}

std::string systemRoot()
{
    auto root = fixedRoot();
    while (root.ends_with('/'))
        root.pop_back();
    return root;
}

bool usesSandboxStore()
{
    return false;
}

} // namespace platform
