#pragma once

#include "helper/linux/installation/OpenFolder.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace helper {

// The folder of a version whose place another one has taken. Of what is in it, only the files that its list names are
// removed, and the folders that held nothing else. Everything else is somebody else's: it moves to the same place in
// the folder of the version that is there now, and overwrites nothing in it.
class ReplacedVersion {
public:
    // Something that stays where it is, and the errno value of why.
    struct Remainder {
        std::string path;
        int failure;
    };

    ReplacedVersion(std::string folder, std::string product) : _folder(std::move(folder)), _product(std::move(product))
    {
    }

    // The folder is gone when this returns nothing. It may be interrupted and called again at any time: the list goes
    // last.
    std::vector<Remainder> clear();

private:
    void clearFolder(const OpenFolder& folder, const std::string& path);
    void clearEntry(const OpenFolder& folder, const OpenFolder::Entry& entry, const std::string& path);
    void move(const OpenFolder& folder, const std::string& name, const std::string& path);
    void moveInto(const OpenFolder& target, const OpenFolder& folder, const std::string& name, const std::string& path);
    void moveBeside(const OpenFolder& target, const OpenFolder& folder, const std::string& name,
                    const std::string& path);
    void stays(const std::string& path, int failure);

    const std::string _folder;
    const std::string _product;
    std::set<std::string> _files;
    std::set<std::string> _folders;
    std::vector<Remainder> _remainders;
};

} // namespace helper
