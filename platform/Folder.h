#pragma once

#include <expected>
#include <string>

namespace platform {

// What is before the path's last slash; "" when it has none.
inline std::string parentOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// Creates the folder and those above it with the default attributes (mode 0777 less the umask). Success when it is
// already there. The failure is an errno value.
std::expected<void, int> createFolder(const std::string& path);

// Removes the folder with everything in it, or the file or link of that name. Links are removed, never followed, and
// nothing on another file system is touched. What can be removed is, also when something else cannot. The failure is
// the first errno value; ENOENT when there is nothing.
std::expected<void, int> removeFolder(const std::string& path);

// Makes the entries of the folder permanent: a file that was made, renamed or removed in it stays so after a power cut.
// The failure is an errno value.
std::expected<void, int> syncFolder(const std::string& path);

} // namespace platform
