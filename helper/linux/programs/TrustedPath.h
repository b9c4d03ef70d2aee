#pragma once

#include <optional>
#include <string>

namespace helper {

// Where a path leads, link by link and as far as it is there, and who could lead it elsewhere. Where this process is
// not the administrator's own, nothing can be gained by that, and nothing is said.
struct PathTrust {
    // The first part that somebody other than the administrator could change, or put something else in the place of. Of
    // a path that is not there yet the last folder must be the administrator's alone.
    std::optional<std::string> untrusted;
    // Where the way enters a disk of those that people plug in: its mount point, and where it was not yet, an empty
    // text. Who owns what on it says nothing, since it may have been made elsewhere: all of it is somebody else's.
    std::optional<std::string> disk;
};
PathTrust trustOfPath(const std::string& path);

// The first part that is not the administrator's alone, be it a disk; nullopt when there is none.
std::optional<std::string> untrustedPart(const std::string& path);

// The path without links, as far as it is there.
std::string resolvedPath(const std::string& path);

} // namespace helper
