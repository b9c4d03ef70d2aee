#pragma once

#include <string>
#include <vector>

namespace helper {

// Keeps a program to the folders that it may write to: for it everything else is read-only, and on the disks no link is
// followed and no device or program is one. The administrator's process alone can do that.
class BackupConfinement {
public:
    // Mount points; none: nothing is confined. The folders are the administrator's own.
    BackupConfinement(std::vector<std::string> disks, std::vector<std::string> folders);

    // Confines this process, which has one thread, and those that it starts. 0, or an errno value; then the program
    // must not be run. Allocates nothing, so a forked process may call it.
    int apply() const;

private:
    std::vector<std::string> _disks;
    std::vector<std::string> _folders;
};

} // namespace helper
