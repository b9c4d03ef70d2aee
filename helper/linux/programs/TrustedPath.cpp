#include "helper/linux/programs/TrustedPath.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

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

constexpr int maximumLinks = 40;

// Where the desktop mounts the disks of the people who plug them in.
bool isPlaceOfDisks(const std::string& path)
{
    return path.starts_with("/media/") || path.starts_with("/run/media/");
}

std::string targetOf(const std::string& link)
{
    std::array<char, PATH_MAX> target;
    const auto size = ::readlink(link.c_str(), target.data(), target.size());
    return size < 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(size));
}

// A walk along a path, that follows links by itself.
class Walk {
public:
    explicit Walk(const std::string& path) : _rest(path) { enterRoot(); }

    PathTrust trust()
    {
        while (nextPart()) {
            struct stat status{};
            if (::lstat(_part.c_str(), &status) != 0)
                return end(isWritableByOthers(_above) ? std::optional(_folder) : std::nullopt);
            if (isPlaceOfDisks(_part) && S_ISDIR(status.st_mode) && status.st_dev != _above.st_dev)
                return {.untrusted = {}, .disk = _part};
            if (isOthers(status) || (isWritableByOthers(status) && (isLast() || !isSticky(status))))
                return end(_part);
            if (!S_ISLNK(status.st_mode))
                enter(status);
            else if (!follow())
                return end(_part);
        }
        return end(std::nullopt);
    }

private:
    bool isLast() const { return _rest.find_first_not_of('/') == std::string::npos; }

    // False at the end. ".." only comes from links: then the folder above is the part.
    bool nextPart()
    {
        const auto start = _rest.find_first_not_of('/');
        if (start == std::string::npos)
            return false;
        const auto size = std::min(_rest.find('/', start), _rest.size()) - start;
        const auto name = _rest.substr(start, size);
        _rest.erase(0, start + size);
        if (name == "..")
            _part = _folder.substr(0, std::max<std::size_t>(_folder.rfind('/'), 1));
        else
            _part = name == "." ? _folder : (_folder == "/" ? "" : _folder) + "/" + name;
        return true;
    }

    void enter(const struct stat& status)
    {
        _folder = _part;
        _above = status;
    }

    bool follow()
    {
        const auto target = targetOf(_part);
        if (target.empty() || ++_links > maximumLinks)
            return false;
        if (target.front() == '/')
            enterRoot();
        _rest = target + "/" + _rest;
        return true;
    }

    void enterRoot()
    {
        _folder = "/";
        ::lstat("/", &_above);
    }

    PathTrust end(std::optional<std::string> untrusted) const
    {
        const bool isMissing = isPlaceOfDisks(_part);
        return {.untrusted = std::move(untrusted), .disk = isMissing ? std::optional<std::string>("") : std::nullopt};
    }

    std::string _rest;
    std::string _folder = "/"; // the last part that was entered
    std::string _part = "/";
    struct stat _above{};
    int _links = 0;
};

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

PathTrust trustOfPath(const std::string& path)
{
    return ::geteuid() == 0 ? Walk(path).trust() : PathTrust();
}

std::optional<std::string> untrustedPart(const std::string& path)
{
    auto trust = trustOfPath(path);
    return trust.untrusted || !trust.disk || trust.disk->empty() ? trust.untrusted : trust.disk;
}

} // namespace helper
