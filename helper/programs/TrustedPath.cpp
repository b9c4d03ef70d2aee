#include "helper/programs/TrustedPath.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

namespace {

bool isOthers(const struct stat& status)
{
    return status.st_uid != 0;
}

bool isWritableByOthers(const struct stat& status)
{
    return !S_ISLNK(status.st_mode) && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// Everybody may make files in a sticky folder, but not replace the administrator's.
bool isSticky(const struct stat& status)
{
    return S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
}

std::optional<std::string> untrustedComponent(const std::string& path)
{
    std::string folder = "/"; // the last part that is there
    struct stat above{};
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('/', end + 1);
        const auto part = end == std::string::npos ? path : path.substr(0, end);
        struct stat status{};
        if (::lstat(part.c_str(), &status) != 0)
            return isWritableByOthers(above) ? std::optional(folder) : std::nullopt;
        const bool isLast = end == std::string::npos || end + 1 == path.size();
        if (isOthers(status) || (isWritableByOthers(status) && (isLast || !isSticky(status))))
            return part;
        above = status;
        folder = part;
    }
    return std::nullopt;
}

} // namespace

std::string resolvedPath(const std::string& path)
{
    for (auto end = path.size(); end != 0 && end != std::string::npos; end = path.rfind('/', end - 1)) {
        const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.substr(0, end).c_str(), nullptr),
                                                                   &std::free);
        if (resolved)
            return (std::string(resolved.get()) == "/" ? "" : resolved.get()) + path.substr(end);
    }
    return path;
}

std::optional<std::string> untrustedPart(const std::string& path)
{
    if (::geteuid() != 0)
        return std::nullopt;
    if (auto part = untrustedComponent(path))
        return part;
    return untrustedComponent(resolvedPath(path));
}

} // namespace helper
