#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace helper {

// What the system remembers of an installed package.
struct PackageReceipt {
    std::string version;
    std::string folder;             // of the paths, whole and without a slash at the end: "" is the root
    std::vector<std::string> paths; // of files, links and folders below it, each after the folder that it is in

    bool operator==(const PackageReceipt&) const = default;

    // By the output of "pkgutil --pkg-info" and that of "pkgutil --files". nullopt when one is not understood, or names
    // something that is not below the folder.
    static std::optional<PackageReceipt> inOutput(std::string_view information, std::string_view files);
};

} // namespace helper
