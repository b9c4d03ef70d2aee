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

// The folder with everything in it, as platform::removeFolder() does, but a tree that is not there is removed already.
std::expected<void, int> removeTree(const std::string& folder);

// Makes every folder of the tree permanent; its files are already.
std::expected<void, int> syncFolders(const std::string& folder);

} // namespace helper
