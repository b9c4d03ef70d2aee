#pragma once

#include <optional>
#include <string>

namespace helper {

// The first part of an absolute path that somebody other than the administrator could change, or put something else in
// the place of; nothing when there is none. A path that is not there yet is looked at as far as it is, and then its
// last folder must be the administrator's alone. Where this process is not the administrator's own, nothing can be
// gained by it, and every path will do.
std::optional<std::string> untrustedPart(const std::string& path);

// The path without links, as far as it is there.
std::string resolvedPath(const std::string& path);

} // namespace helper
