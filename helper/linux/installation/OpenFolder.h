#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <expected>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace helper {

// A folder that is held open. What is below it is reached name by name, through no link and into no other device or
// mount. Failures are errno values.
class OpenFolder {
public:
    struct Entry {
        std::string name;
        bool isFolder;
    };

    // The folder at a path, whose last name is no link.
    static std::expected<OpenFolder, int> at(const std::string& path);

    // The folder of that name in this one. ELOOP or ENOTDIR when it is no folder, EXDEV when another device or mount
    // begins there.
    std::expected<OpenFolder, int> folder(const std::string& name) const;
    // The same, made when there is nothing of that name.
    std::expected<OpenFolder, int> madeFolder(const std::string& name) const;

    std::expected<std::vector<Entry>, int> entries() const;
    bool holdsFolder(const std::string& name) const;

    int descriptor() const { return _descriptor.get(); }

private:
    struct Place {
        dev_t device;
        std::uint64_t mount;

        bool operator==(const Place&) const = default;
    };

    OpenFolder(platform::FileDescriptor descriptor, Place place) : _descriptor(std::move(descriptor)), _place(place) { }
    static std::expected<OpenFolder, int> open(int folder, const char* name);

    platform::FileDescriptor _descriptor;
    Place _place;
};

} // namespace helper
