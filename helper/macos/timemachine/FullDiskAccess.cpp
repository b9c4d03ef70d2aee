#include "helper/macos/timemachine/FullDiskAccess.h"

#include "platform/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>

namespace helper {

namespace {

int openForReading(const std::string& path)
{
    const platform::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file ? 0 : errno;
}

} // namespace

FullDiskAccess fullDiskAccess(const std::vector<std::string>& files, const std::function<int(const std::string&)>& open)
{
    bool isAnyOpen = false;
    for (const auto& file : files) {
        const int failure = open(file);
        if (failure == EPERM)
            return FullDiskAccess::Missing;
        isAnyOpen = isAnyOpen || failure == 0;
    }
    return isAnyOpen ? FullDiskAccess::Granted : FullDiskAccess::Unknown;
}

// The second is there on every system that knows of this access.
FullDiskAccess fullDiskAccess()
{
    return fullDiskAccess(
        {"/Library/Preferences/com.apple.TimeMachine.plist", "/Library/Application Support/com.apple.TCC/TCC.db"},
        openForReading);
}

bool asksForFullDiskAccess(std::string_view output)
{
    return output.find("Full Disk Access") != std::string_view::npos;
}

} // namespace helper
