#include "helper/macos/packages/ReceiptRemoval.h"

#include "helper/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

using platform::Result;

namespace {

enum class Kind { Nothing, File, Folder };

Kind kindOf(const std::string& path)
{
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0)
        return Kind::Nothing;
    return S_ISDIR(status.st_mode) ? Kind::Folder : Kind::File;
}

// Whether every folder on the way from the receipt's is one itself, and no link. They belong to administrators, so
// nobody else can put a link there meanwhile.
bool isReachedByFolders(const std::string& folder, const std::string& path)
{
    for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (kindOf(folder + "/" + path.substr(0, slash)) != Kind::Folder)
            return false;
    }
    return true;
}

class Remover {
public:
    explicit Remover(const std::string& folder) : _folder(folder) { }

    void remove(const std::string& path)
    {
        const auto whole = _folder + "/" + path;
        const auto kind = isReachedByFolders(_folder, path) ? kindOf(whole) : Kind::Nothing;
        if (kind == Kind::File && ::unlink(whole.c_str()) != 0)
            keep(whole, errno);
        if (kind == Kind::Folder && isOwnFolder(path) && ::rmdir(whole.c_str()) != 0 && errno != ENOTEMPTY
            && errno != EEXIST)
            keep(whole, errno);
    }
    Result<void> result() const { return _result; }

private:
    void keep(const std::string& path, int failure)
    {
        if (_result && failure != ENOENT)
            _result = std::unexpected(systemError(failure, "'" + path + "' could not be removed."));
    }

    const std::string& _folder;
    Result<void> _result;
};

} // namespace

bool isOwnFolder(std::string_view path)
{
    while (true) {
        const auto slash = path.find('/');
        const auto part = path.substr(0, slash);
        if (part == "Brevane" || part == "Brevane.app" || part.starts_with("com.zerkolin.brevane"))
            return true;
        if (slash == std::string_view::npos)
            return false;
        path.remove_prefix(slash + 1);
    }
}

Result<void> removeFilesOfReceipt(const PackageReceipt& receipt, const std::vector<std::string>& last)
{
    // Backwards, so that what is in a folder comes before it.
    auto paths = receipt.paths;
    std::ranges::sort(paths, std::greater<>());
    const auto comesLast = [&last](const std::string& path) {
        return std::ranges::any_of(last, [&path](const std::string& name) { return path.ends_with(name); });
    };
    Remover remover(receipt.folder);
    for (const auto& path : paths) {
        if (!comesLast(path))
            remover.remove(path);
    }
    if (!remover.result())
        return remover.result(); // what the next try needs is still there
    for (const auto& path : paths)
        remover.remove(path);
    return remover.result();
}

} // namespace helper
