#include "diagnostics/log/ZRKLog.h"
#include "helper/installation/FileTree.h"
#include "helper/installation/Installation.h"
#include "helper/installation/SystemError.h"
#include "helper/installation/WrittenFiles.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace helper {

using platform::Result;

namespace {

constexpr const char* ownProgram = "com.zerkolin.brevane.scheduler";

// Remembers the first thing that could not be removed, and goes on.
class Remover {
public:
    void removeFile(const std::string& path)
    {
        if (::unlink(path.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)
            keep(path);
    }

    // A folder that holds something else stays.
    void removeFolder(const std::string& path)
    {
        if (::rmdir(path.c_str()) != 0 && errno != ENOENT && errno != ENOTEMPTY && errno != EEXIST && errno != ENOTDIR
            && errno != EBUSY)
            keep(path);
    }

    Result<void> result() const { return _result; }

private:
    void keep(const std::string& path)
    {
        if (_result)
            _result = std::unexpected(systemError(errno, "'" + path + "' could not be removed."));
    }

    Result<void> _result;
};

} // namespace

Result<void> Installation::remove() const
{
    auto installed = manifest();
    if (!installed)
        return std::unexpected(systemError(ENOENT, "There is no installation below '" + _root + "'."));
    Remover remover;
    for (const auto& file : writtenFiles())
        remover.removeFile(file);
    removeLinks(*installed, nullptr);
    for (const auto& file : installed->files) {
        if (file != ownProgram)
            remover.removeFile(product() + "/" + file);
    }
    for (const auto& folder : installed->innerFolders())
        remover.removeFolder(product() + "/" + folder);
    if (auto removed = removeTree(stagingFolder()); !removed)
        return std::unexpected(systemError(removed.error(), "'" + stagingFolder() + "' could not be removed."));
    if (!remover.result())
        return remover.result();

    remover.removeFile(product() + "/" + ownProgram);
    remover.removeFile(product() + "/" + InstallationManifest::fileName);
    remover.removeFolder(product());
    auto folders = installed->folders;
    std::ranges::sort(folders, std::greater<>());
    for (const auto& folder : folders)
        remover.removeFolder(folder == "." ? _root : path(folder));
    return remover.result();
}

} // namespace helper
