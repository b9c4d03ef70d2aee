#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace helper {

// A relative path of at least one name, without empty names, "." and "..", that is not longer than the system takes.
bool isPathInside(std::string_view path);

// Whether a symbolic link at the path, made of names alone, points to something below the same folder.
bool isLinkInside(std::string_view path, std::string_view target);

// Removes the folder with everything in it, through no link and into no other device or mount; one that is not there is
// removed already. What can be removed is, also when something else cannot. The failure is the first errno value.
std::expected<void, int> removeTree(const std::string& folder);

// Makes everything permanent that was written below the folder: one request for the whole file system.
std::expected<void, int> syncTree(const std::string& folder);

} // namespace helper
