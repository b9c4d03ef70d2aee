#include "platform/AtomicFile.h"

#include "platform/FileDescriptor.h"
#include "platform/FileSync.h"
#include "platform/Folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view suffixPattern = "XXXXXX";

std::unexpected<int> lastFailure()
{
    return std::unexpected(errno);
}

std::string folderOf(const std::string& path)
{
    auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Hidden, and told from other files' temporaries by the whole name: ".NAME.XXXXXX".
std::string temporaryPrefix(const std::string& path)
{
    return "." + path.substr(path.rfind('/') + 1) + ".";
}

bool writeAll(int descriptor, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

std::expected<void, int> replaceFile(const std::string& path, std::span<const std::uint8_t> bytes, mode_t mode)
{
    auto folder = folderOf(path);
    auto temporary = folder + "/" + temporaryPrefix(path) + std::string(suffixPattern);
    FileDescriptor descriptor(makeTemporary(temporary.data()));
    if (!descriptor)
        return lastFailure();

    bool written = writeAll(descriptor.get(), bytes) && ::fchmod(descriptor.get(), mode) == 0
        && makePermanent(descriptor.get()) && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!written) {
        auto failure = lastFailure();
        ::unlink(temporary.c_str());
        return failure;
    }
    return syncFolder(folder);
}

void removeInterruptedReplacements(const std::string& path)
{
    auto folder = folderOf(path);
    auto prefix = temporaryPrefix(path);
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return;
    while (auto* entry = ::readdir(directory)) {
        std::string_view name = entry->d_name;
        if (name.size() == prefix.size() + suffixPattern.size() && name.starts_with(prefix))
            ::unlink((folder + "/" + entry->d_name).c_str());
    }
    ::closedir(directory);
}

std::expected<Data, int> readFile(const std::string& path, std::size_t limit)
{
    // Not blocking, so that a pipe put in the file's place cannot hold the reader up.
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return descriptor ? readFile(descriptor.get(), limit) : lastFailure();
}

std::expected<Data, int> readFile(int file, std::size_t limit)
{
    struct stat status{};
    if (::fstat(file, &status) != 0)
        return lastFailure();
    if (!S_ISREG(status.st_mode))
        return std::unexpected(EINVAL);

    // One byte more than the size, so that the usual file ends within one buffer.
    Data bytes(std::min(static_cast<std::size_t>(status.st_size), limit) + 1);
    std::size_t length = 0;
    for (;;) {
        auto count = ::read(file, bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return lastFailure();
        length += static_cast<std::size_t>(count);
        if (length > limit)
            return std::unexpected(EFBIG);
        if (count == 0)
            break;
        if (length == bytes.size())
            bytes.resize(2 * length);
    }
    bytes.resize(length);
    return bytes;
}

} // namespace platform
