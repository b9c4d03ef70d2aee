#include "platform/FileWriting.h"

#include "platform/AtomicFile.h"
#include "platform/Format.h"
#include "platform/Localization.h"

#include <cerrno>
#include <climits>
#include <expected>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr mode_t newFileMode = 0644;

std::int64_t writeErrorCode(int failure)
{
    switch (failure) {
    case EACCES:
    case EPERM:
        return 513;
    case ENOENT:
        return 4;
    case ENOSPC:
    case EDQUOT:
        return 640;
    case EROFS:
        return 642;
    default:
        return 512;
    }
}

Error writeError(const std::string& path, int failure)
{
    const auto name = path.substr(path.rfind('/') + 1);
    const auto sentence = formatString(localizedString("The file “%@” could not be saved."), {name});
    return {CocoaErrorDomain,
            writeErrorCode(failure),
            {{LocalizedDescriptionKey, sentence.value_or(name)}, {"NSFilePath", path}},
            std::make_shared<Error>(Error{POSIXErrorDomain, failure, {}, nullptr})};
}

// Where the symbolic link leads, through others too; the path itself where it is none. The failure is an errno value.
std::expected<std::string, int> targetOf(std::string path)
{
    constexpr int mostLinks = 40; // as the kernel has it
    for (int links = 0; links < mostLinks; ++links) {
        char target[PATH_MAX];
        const auto length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return path; // no link; what else is wrong shows when it is written
        const std::string_view next(target, static_cast<std::size_t>(length));
        path = next.starts_with('/') ? std::string(next) : path.substr(0, path.rfind('/') + 1).append(next);
    }
    return std::unexpected(ELOOP);
}

} // namespace

Result<void> writeFileAtomically(const std::string& path, std::string_view bytes)
{
    const auto target = targetOf(path);
    if (!target)
        return std::unexpected(writeError(path, target.error()));
    struct stat earlier{};
    const auto mode = ::stat(target->c_str(), &earlier) == 0 ? earlier.st_mode & 07777 : newFileMode;
    const auto written =
        replaceFile(*target, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, mode);
    if (!written)
        return std::unexpected(writeError(path, written.error()));
    return {};
}

// The desktops' own convention: a list with commas in an extended attribute.
bool setTagNames(const std::string& path, const std::vector<std::string>& names)
{
    std::string list;
    for (const auto& name : names)
        list.append(list.empty() ? "" : ",").append(name);
    return ::setxattr(path.c_str(), "user.xdg.tags", list.data(), list.size(), 0) == 0;
}

} // namespace platform
