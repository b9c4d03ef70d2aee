#pragma once

#include "platform/Error.h"

#include <string>
#include <utility>
#include <vector>

namespace helper {

// What is to be removed, in this order. What is not there is removed already.
class RemovalPlan {
public:
    // Anything but a folder.
    void addFile(const std::string& path) { _files.push_back(path); }
    // A symbolic link, if it is one and leads there.
    void addLink(const std::string& path, const std::string& target) { _links.emplace_back(path, target); }
    // After files and links: a folder that is empty by then. One that holds something else stays.
    void addFolder(const std::string& path) { _folders.push_back(path); }

    // Whether all of it can be removed, as far as that can be known without trying: nothing is a folder where a file is
    // expected, immutable, a mount, or on a disk that is read-only. An errno value's error names the first.
    platform::Result<void> check() const;
    // Stops at nothing, and fails with the first that could not be removed.
    platform::Result<void> carryOut() const;

private:
    std::vector<std::string> _files;
    std::vector<std::pair<std::string, std::string>> _links;
    std::vector<std::string> _folders;
};

} // namespace helper
