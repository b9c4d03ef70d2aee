#include "platform/Root.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace platform {

namespace {

std::string& fixedRoot()
{
    // Never destroyed, since threads may still log while the process ends.
    static auto& root = *new std::string;
    return root;
}

std::string absolutePath(std::string path)
{
    char folder[PATH_MAX];
    if (!path.starts_with('/') && ::getcwd(folder, sizeof folder))
        path = std::string(folder) + "/" + path;
    return path;
}

} // namespace

const char* installedRoot()
{
    return "/opt/brevane";
}

void setSystemRoot(const std::string& path)
{
    fixedRoot() = absolutePath(path);
}

std::string systemRoot()
{
    auto root = fixedRoot();
    if (root.empty()) {
        const char* variable = std::getenv("BREVANE_ROOT");
        root = variable && *variable ? absolutePath(variable) : installedRoot();
    }
    while (root.ends_with('/'))
        root.pop_back();
    return root;
}

bool usesSandboxStore()
{
    return systemRoot() != installedRoot();
}

} // namespace platform
