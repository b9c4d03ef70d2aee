#include "helper/update/Updater.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/installation/SystemError.h"
#include "helper/update/Download.h"
#include "helper/update/PackageArchive.h"
#include "helper/update/PackageSignature.h"
#include "messaging/ZRKError.h"
#include "platform/FileDescriptor.h"
#include "platform/SystemInformation.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace helper {

using platform::Error;
using platform::FileDescriptor;
using platform::Result;

namespace {

constexpr std::int64_t tooManyRequests = 429;

std::unexpected<Error> updaterError(std::int64_t code)
{
    return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code));
}

std::unexpected<Error> updaterError(std::int64_t code, Error reason)
{
    return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code, {}, std::move(reason)));
}

// The error of a download that serves the purpose of `code`.
std::unexpected<Error> downloadError(std::int64_t code, Download::Failure failure)
{
    switch (failure.fault) {
    case Download::Fault::Status:
        if (failure.status == tooManyRequests)
            return updaterError(ZRKUpdaterErrorTooManyRequests);
        return std::unexpected(
            ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code, {{"status-code", failure.status}}));
    case Download::Fault::Untrusted:
        return updaterError(ZRKUpdaterErrorUntrustedServer, std::move(failure.reason));
    case Download::Fault::TooLarge:
        return updaterError(code == ZRKUpdaterErrorFetchInfo ? ZRKUpdaterErrorReadData : code,
                            std::move(failure.reason));
    default:
        return updaterError(code, std::move(failure.reason));
    }
}

} // namespace

std::string Updater::installedVersion() const
{
    auto manifest = _installation.manifest();
    return manifest ? manifest->version : platform::bundleVersion();
}

void Updater::recover() const
{
    if (!_installation.isInterrupted())
        return;
    ZRKLogMessage(LogLevelDefault, "An update was interrupted. Version %@ is in place.", {installedVersion()});
    _installation.endReplacement();
}

Result<UpdateInformation> Updater::check(const Download::GivenUp& isGivenUp) const
{
    auto bytes = Download(_configuration).fetch(_configuration.feed, UpdateFeed::maximumSize, isGivenUp);
    if (!bytes)
        return downloadError(ZRKUpdaterErrorFetchInfo, std::move(bytes.error()));
    auto information = UpdateFeed::informationInFeed(*bytes, _configuration.feed);
    if (!information)
        return information;
    if (information->version <= VersionNumber::parse(installedVersion()))
        return updaterError(ZRKUpdaterErrorUpToDate);
    if (UpdateFeed::placeOfMachine(*information->reply.stringForKey(PayloadKey::Version)) >= information->share)
        return updaterError(ZRKUpdaterErrorPhasedDeferral);
    return information;
}

Result<void> Updater::install() const
{
    if (!_installation.manifest())
        return updaterError(ZRKUpdaterErrorCannotUpdateNow);
    auto information = check();
    if (!information)
        return std::unexpected(std::move(information.error()));
    ZRKLogMessage(LogLevelDefault, "Installing version %@.", {*information->reply.stringForKey(PayloadKey::Version)});
    auto package = downloadPackage(*information);
    auto staged =
        package ? unpackPackage(*package) : Result<InstallationManifest>(std::unexpected(std::move(package.error())));
    Result<void> done;
    if (!staged) {
        done = std::unexpected(std::move(staged.error()));
    } else if (auto replaced = _installation.replace(std::move(*staged)); !replaced) {
        done = updaterError(ZRKUpdaterErrorInstall, std::move(replaced.error()));
    }
    _installation.endReplacement();
    return done;
}

Result<std::string> Updater::downloadPackage(const UpdateInformation& information) const
{
    if (auto begun = _installation.beginStaging(); !begun)
        return updaterError(ZRKUpdaterErrorDownload, std::move(begun.error()));
    auto part = _installation.stagingFolder() + "/download";
    auto package = _installation.stagingFolder() + "/Brevane.pkg";
    FileDescriptor file(::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        return updaterError(ZRKUpdaterErrorDownload, systemError(errno, "'" + part + "' could not be written."));
    auto limit = information.size != 0 ? information.size : UpdateFeed::maximumPackageSize;
    if (auto saved = Download(_configuration).save(information.package, limit, file.get()); !saved)
        return downloadError(ZRKUpdaterErrorDownload, std::move(saved.error()));
    if (::rename(part.c_str(), package.c_str()) != 0)
        return updaterError(ZRKUpdaterErrorMovePackage, systemError(errno, "'" + part + "' could not be moved."));
    return package;
}

Result<InstallationManifest> Updater::unpackPackage(const std::string& package) const
{
    const FileDescriptor file(::open(package.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    auto length = PackageSignature::verifiedLength(file.get(), package, _configuration.key);
    if (!length)
        return updaterError(ZRKUpdaterErrorValidate, std::move(length.error()));
    if (auto unpacked = PackageArchive::unpack(file.get(), *length, _installation.stagedProduct()); !unpacked) {
        bool isBad = unpacked.error().code == EBADMSG;
        return updaterError(isBad ? ZRKUpdaterErrorValidate : ZRKUpdaterErrorInstall, std::move(unpacked.error()));
    }
    auto staged = _installation.checkStaged();
    if (!staged)
        return updaterError(ZRKUpdaterErrorValidate, std::move(staged.error()));
    // The signature also holds for packages of the past.
    if (VersionNumber::parse(staged->version) <= VersionNumber::parse(installedVersion()))
        return updaterError(
            ZRKUpdaterErrorValidate,
            systemError(EBADMSG, "The package holds version " + staged->version + ", which is not newer."));
    return staged;
}

} // namespace helper
