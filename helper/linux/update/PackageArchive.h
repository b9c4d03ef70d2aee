#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <string>

namespace helper {

// Unpacks the archive of a package: a tar, compressed or not, of files, folders and symbolic links.
class PackageArchive {
public:
    static constexpr std::uint64_t maximumSize = std::uint64_t(2) << 30; // unpacked, in bytes
    static constexpr std::size_t maximumEntries = 20'000;

    // Unpacks the first `length` bytes of the file into an empty folder; nothing is synced yet. EBADMSG for an archive
    // that is damaged or holds what no package may hold: a path or a link that leads outside, another kind of entry, a
    // path twice, or too much. Files belong to this process's user, with mode 0644 or 0755.
    static platform::Result<void> unpack(int file, std::uint64_t length, const std::string& folder);
};

} // namespace helper
