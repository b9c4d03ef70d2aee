#include "helper/linux/update/PackageArchive.h"

#include "helper/linux/installation/FileTree.h"
#include "helper/SystemError.h"
#include "platform/FileDescriptor.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace helper {

using platform::FileDescriptor;
using platform::Result;

namespace {

using Archive = std::unique_ptr<archive, decltype([](archive* reader) { archive_read_free(reader); })>;

// The part of the file that is the archive.
struct Source {
    int file;
    std::uint64_t offset;
    std::uint64_t end;
    std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(std::size_t(1) << 18);
};

la_ssize_t readSource(archive* reader, void* context, const void** bytes)
{
    auto& source = *static_cast<Source*>(context);
    auto count = std::min<std::uint64_t>(source.buffer.size(), source.end - source.offset);
    la_ssize_t read = 0;
    do {
        read = ::pread(source.file, source.buffer.data(), count, static_cast<off_t>(source.offset));
    } while (read < 0 && errno == EINTR);
    if (read < 0) {
        archive_set_error(reader, errno, "The package cannot be read");
        return ARCHIVE_FATAL;
    }
    source.offset += static_cast<std::uint64_t>(read);
    *bytes = source.buffer.data();
    return read;
}

std::unexpected<platform::Error> refused(const std::string& text)
{
    return std::unexpected(systemError(EBADMSG, text));
}

std::unexpected<platform::Error> notWritten(const std::string& path)
{
    return std::unexpected(systemError(errno, "'" + path + "' could not be written."));
}

class Unpacker {
public:
    Unpacker(archive* reader, int folder) : _reader(reader), _folder(folder) { }

    Result<void> unpackAll();

private:
    Result<void> unpackEntry(archive_entry* entry);
    Result<void> unpackFile(archive_entry* entry, int parent, const std::string& name, const std::string& path);
    Result<FileDescriptor> makeParent(const std::string& path);
    std::unexpected<platform::Error> damaged() const;

    archive* _reader;
    int _folder;
    std::uint64_t _size = 0;
    std::size_t _count = 0;
};

std::unexpected<platform::Error> Unpacker::damaged() const
{
    const char* text = archive_error_string(_reader);
    return refused(std::string("The package is damaged: ") + (text ? text : "unreadable") + ".");
}

Result<void> Unpacker::unpackAll()
{
    archive_entry* entry = nullptr;
    for (;;) {
        const int result = archive_read_next_header(_reader, &entry);
        if (result == ARCHIVE_EOF)
            return {};
        if (result != ARCHIVE_OK)
            return damaged();
        if (++_count > PackageArchive::maximumEntries)
            return refused("The package holds too many files.");
        if (auto done = unpackEntry(entry); !done)
            return done;
    }
}

// Every folder on the way is opened by itself and never through a link, whatever the archive made before.
Result<FileDescriptor> Unpacker::makeParent(const std::string& path)
{
    FileDescriptor at(::fcntl(_folder, F_DUPFD_CLOEXEC, 0));
    for (std::size_t start = 0, slash = 0; (slash = path.find('/', start)) != std::string::npos; start = slash + 1) {
        const auto name = path.substr(start, slash - start);
        if (::mkdirat(at.get(), name.c_str(), 0755) != 0 && errno != EEXIST)
            return notWritten(path);
        FileDescriptor next(::openat(at.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next && (errno == ELOOP || errno == ENOTDIR))
            return refused("The path '" + path + "' in the package leads through something that is no folder.");
        if (!next)
            return notWritten(path);
        at = std::move(next);
    }
    return at;
}

Result<void> Unpacker::unpackEntry(archive_entry* entry)
{
    const char* text = archive_entry_pathname(entry);
    std::string path(text ? text : "");
    while (path.starts_with("./"))
        path.erase(0, 2);
    while (path.ends_with('/'))
        path.pop_back();
    const auto kind = archive_entry_filetype(entry);
    if (kind == AE_IFDIR && (path.empty() || path == "."))
        return {};
    if (!isPathInside(path))
        return refused("The path '" + path + "' in the package leads outside of it.");
    if (archive_entry_hardlink(entry) || (kind != AE_IFREG && kind != AE_IFDIR && kind != AE_IFLNK))
        return refused("'" + path + "' in the package is neither a file nor a folder nor a symbolic link.");

    auto parent = makeParent(path);
    if (!parent)
        return std::unexpected(std::move(parent.error()));
    const auto name = path.substr(path.rfind('/') + 1);
    if (kind == AE_IFREG)
        return unpackFile(entry, parent->get(), name, path);
    if (kind == AE_IFLNK) {
        const char* target = archive_entry_symlink(entry);
        if (!target || !isLinkInside(path, target))
            return refused("The link '" + path + "' in the package leads outside of it.");
        return ::symlinkat(target, parent->get(), name.c_str()) == 0 ? Result<void>() : notWritten(path);
    }
    if (::mkdirat(parent->get(), name.c_str(), 0755) == 0)
        return {};
    struct stat status{};
    bool isFolder = errno == EEXIST && ::fstatat(parent->get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
        && S_ISDIR(status.st_mode);
    return isFolder ? Result<void>() : notWritten(path);
}

Result<void> Unpacker::unpackFile(archive_entry* entry, int parent, const std::string& name, const std::string& path)
{
    const mode_t mode = (archive_entry_perm(entry) & S_IXUSR) != 0 ? 0755 : 0644;
    FileDescriptor file(::openat(parent, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file && errno == EEXIST)
        return refused("'" + path + "' is in the package twice.");
    if (!file)
        return notWritten(path);
    for (;;) {
        const void* bytes = nullptr;
        std::size_t count = 0;
        la_int64_t offset = 0;
        const int result = archive_read_data_block(_reader, &bytes, &count, &offset);
        if (result == ARCHIVE_EOF)
            break;
        if (result != ARCHIVE_OK)
            return damaged();
        const auto end = static_cast<std::uint64_t>(offset) + count;
        _size += count;
        if (offset < 0 || end > PackageArchive::maximumSize || _size > PackageArchive::maximumSize)
            return refused("The package holds too much.");
        const auto* at = static_cast<const char*>(bytes);
        while (count > 0) {
            auto written = ::pwrite(file.get(), at, count, offset);
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return notWritten(path);
            at += written;
            offset += written;
            count -= static_cast<std::size_t>(written);
        }
    }
    return ::fchmod(file.get(), mode) == 0 ? Result<void>() : notWritten(path);
}

} // namespace

Result<void> PackageArchive::unpack(int file, std::uint64_t length, const std::string& folder)
{
    const Archive reader(archive_read_new());
    const FileDescriptor target(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!reader || !target)
        return notWritten(folder);
    // One format and two kinds of compression: the fewer readers, the fewer mistakes in them.
    archive_read_support_format_tar(reader.get());
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_filter_xz(reader.get());
    Source source{file, 0, length};
    if (archive_read_open(reader.get(), &source, nullptr, readSource, nullptr) != ARCHIVE_OK)
        return refused("The package is damaged: it is no archive.");
    return Unpacker(reader.get(), target.get()).unpackAll();
}

} // namespace helper
