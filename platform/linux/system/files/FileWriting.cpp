#include "platform/FileWriting.h"

#include "platform/Format.h"
#include "platform/linux/system/files/AtomicFile.h"
#include "platform/Localization.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/xattr.h>

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

} // namespace

Result<void> writeFileAtomically(const std::string& path, std::string_view bytes)
{
    struct stat earlier{};
    const auto mode = ::stat(path.c_str(), &earlier) == 0 ? earlier.st_mode & 07777 : newFileMode;
    const auto written = replaceFile(path, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, mode);
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
