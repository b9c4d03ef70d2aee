#include "helper/macos/packages/PackageInstallation.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/macos/packages/ReceiptRemoval.h"
#include "helper/SystemError.h"
#include "helper/update/FeedCheck.h"
#include "helper/update/PackageSignature.h"
#include "helper/update/UpdaterErrors.h"
#include "messaging/ZRKError.h"
#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/SystemInformation.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace helper {

using platform::Error;
using platform::FileDescriptor;
using platform::Result;

namespace {

// The next try needs the one to run and the other to begin.
const std::vector<std::string> removedLast{"com.zerkolin.brevane.scheduler", "com.zerkolin.brevane.scheduler.plist"};

Error inWords(const std::string& clause)
{
    return systemError(EBADMSG, clause + ".");
}

Error signatureError(std::int64_t code)
{
    return ZRKError::errorWithDomain(ZRKInstallerPackageErrorDomain, code);
}

// A file that says something by being there.
class Mark {
public:
    explicit Mark(std::string path) : _path(std::move(path))
    {
        _isMade = static_cast<bool>(FileDescriptor(::open(_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)));
    }
    ~Mark() { ::unlink(_path.c_str()); }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;

    bool isMade() const { return _isMade; }

private:
    std::string _path;
    bool _isMade;
};

} // namespace

PackageInstallation::PackageInstallation(const HelperOptions& options)
    : PackageInstallation(options.updates, {.tools = PackageTools(), .version = platform::bundleVersion()})
{
}

PackageInstallation::PackageInstallation(UpdateConfiguration configuration, Places places)
    : _configuration(std::move(configuration)),
      _places(std::move(places))
{
}

void PackageInstallation::recover()
{
    ::unlink(_places.installing.c_str());
    if (platform::removeFolder(_places.staging))
        ZRKLogMessage(LogLevelDefault, "An update was interrupted. Version %@ is in place.", {_places.version});
}

Result<platform::PropertyList> PackageInstallation::check(const GivenUp& isGivenUp) const
{
    auto information = FeedCheck(_configuration).newerThan(_places.version, isGivenUp);
    if (!information)
        return std::unexpected(std::move(information.error()));
    return platform::PropertyList(std::move(information->reply));
}

Result<void> PackageInstallation::install(const GivenUp& isGivenUp)
{
    const auto information = FeedCheck(_configuration).newerThan(_places.version, isGivenUp);
    if (!information)
        return std::unexpected(information.error());
    ZRKLogMessage(LogLevelDefault, "Installing version %@.", {*information->reply.stringForKey(PayloadKey::Version)});
    auto done = put(information->package, information->size);
    (void)platform::removeFolder(_places.staging);
    return done;
}

// In a folder of this program's own: what was checked is what is installed.
Result<void> PackageInstallation::put(const std::string& address, std::uint64_t size) const
{
    (void)platform::removeFolder(_places.staging);
    (void)platform::createFolder(_places.staging.substr(0, _places.staging.rfind('/')));
    const auto package = _places.staging + "/Brevane.pkg";
    if (::mkdir(_places.staging.c_str(), 0700) != 0)
        return updaterError(ZRKUpdaterErrorDownload,
                            systemError(errno, "'" + _places.staging + "' could not be made."));
    const FileDescriptor file(::open(package.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        return updaterError(ZRKUpdaterErrorDownload, systemError(errno, "'" + package + "' could not be written."));
    const auto limit = size != 0 ? size : UpdateFeed::maximumPackageSize;
    if (auto saved = Download(_configuration).save(address, limit, file.get()); !saved)
        return downloadError(ZRKUpdaterErrorDownload, std::move(saved.error()));
    if (auto valid = validate(file.get(), package); !valid)
        return updaterError(ZRKUpdaterErrorValidate, std::move(valid.error()));
    const Mark mark(_places.installing);
    if (!mark.isMade())
        return updaterError(ZRKUpdaterErrorInstall,
                            systemError(EACCES, "'" + _places.installing + "' could not be written."));
    if (const auto installed = _places.tools.install(package); !installed)
        return updaterError(ZRKUpdaterErrorInstall, inWords(installed.error()));
    return {};
}

// Our own signature stands behind the package, which the system's tools then see without it.
Result<void> PackageInstallation::validate(int file, const std::string& package) const
{
    const auto length = PackageSignature::verifiedLength(file, package, _configuration.key);
    if (!length)
        return std::unexpected(length.error());
    if (::ftruncate(file, static_cast<off_t>(*length)) != 0)
        return std::unexpected(systemError(errno, "'" + package + "' could not be written."));
    switch (_places.tools.signature(package)) {
    case PackageTools::Signature::Good:
        break;
    case PackageTools::Signature::Missing:
        return std::unexpected(signatureError(ZRKInstallerPackageErrorNotSigned));
    case PackageTools::Signature::Bad:
        return std::unexpected(signatureError(ZRKInstallerPackageErrorInvalidSignature));
    }
    const auto version = _places.tools.version(package, Identifier, _places.staging + "/expanded");
    if (!version)
        return std::unexpected(inWords(version.error()));
    // The signatures also hold for packages of the past.
    if (VersionNumber::parse(*version) <= VersionNumber::parse(_places.version))
        return std::unexpected(systemError(EBADMSG, "The package holds version " + *version + ", which is not newer."));
    return {};
}

Result<void> PackageInstallation::remove(const PasswordRule&, const GivenUp&)
{
    const auto receipt = _places.tools.receipt(Identifier);
    if (!receipt)
        return std::unexpected(inWords(receipt.error()));
    if (!*receipt)
        return std::unexpected(systemError(ENOENT, "Brevane was not installed by its package."));
    if (auto removed = removeFilesOfReceipt(**receipt, removedLast); !removed)
        return removed;
    if (const auto forgotten = _places.tools.forget(Identifier); !forgotten)
        return std::unexpected(inWords(forgotten.error()));
    return {};
}

} // namespace helper
