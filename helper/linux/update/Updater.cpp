#include "helper/linux/update/Updater.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/update/PackageArchive.h"
#include "helper/linux/update/SelfCheck.h"
#include "helper/SystemError.h"
#include "helper/update/Download.h"
#include "helper/update/FeedCheck.h"
#include "helper/update/PackageSignature.h"
#include "helper/update/UpdaterErrors.h"
#include "messaging/ZRKError.h"
#include "platform/FileDescriptor.h"
#include "platform/SystemInformation.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace helper {

using platform::FileDescriptor;
using platform::Result;

namespace {

constexpr std::chrono::seconds selfCheckLimit{10};
constexpr const char* packageName = "/Brevane.pkg"; // below the staging folder

} // namespace

std::string Updater::installedVersion() const
{
    auto manifest = _installation.manifest();
    return manifest ? manifest->version : platform::bundleVersion();
}

void Updater::recover() const
{
    if (const auto lock = _installation.lock(); !lock && lock.error() == EWOULDBLOCK)
        return; // this version is on trial, and watched
    switch (_installation.state()) {
    case Installation::State::Settled:
        return;
    case Installation::State::Unfinished:
        ZRKLogMessage(LogLevelDefault, "An update was interrupted. Version %@ is in place.", {installedVersion()});
        _installation.settle();
        return;
    case Installation::State::OnTrial:
        watchTrial();
        return;
    }
}

// The old version is at work no longer, so the watch begins at once to wait for an answer.
void Updater::watchTrial() const
{
    ZRKLogMessage(LogLevelDefault, "Version %@ is on trial.", {installedVersion()});
    if (const auto watch = UpdateWatch::start(_installation.otherProgram(), _arguments); !watch)
        ZRKError::log(watch.error());
}

Result<UpdateInformation> Updater::check(const Download::GivenUp& isGivenUp) const
{
    return FeedCheck(_configuration).newerThan(installedVersion(), isGivenUp);
}

Result<void> Updater::install()
{
    if (!_installation.manifest())
        return updaterError(ZRKUpdaterErrorCannotUpdateNow);
    auto information = check();
    if (!information)
        return std::unexpected(std::move(information.error()));
    if (!_installation.waitForTrial(_configuration.trial))
        return updaterError(ZRKUpdaterErrorInstall, systemError(EBUSY, "The version in place is still on trial."));
    ZRKLogMessage(LogLevelDefault, "Installing version %@.", {*information->reply.stringForKey(PayloadKey::Version)});
    auto done = put(*information);
    if (!done) {
        _watch.reset();
        _installation.settle();
    }
    return done;
}

Result<void> Updater::put(const UpdateInformation& information)
{
    auto package = downloadPackage(information);
    if (!package)
        return std::unexpected(std::move(package.error()));
    auto staged = unpackPackage(package->get());
    if (!staged)
        return std::unexpected(std::move(staged.error()));
    const auto limit = std::min<std::chrono::milliseconds>(_configuration.trial, selfCheckLimit);
    if (auto checked = checkProgram(_installation.stagedProgram(), _arguments, limit); !checked)
        return updaterError(ZRKUpdaterErrorValidate, std::move(checked.error()));
    if (auto replaced = replace(std::move(*staged)); !replaced)
        return updaterError(ZRKUpdaterErrorInstall, std::move(replaced.error()));
    return {};
}

// The watch comes first: whatever happens from the exchange on, somebody knows what to do.
Result<void> Updater::replace(InstallationManifest staged)
{
    if (auto ready = _installation.makeReady(std::move(staged)); !ready)
        return ready;
    auto watch = UpdateWatch::start("/proc/self/exe", _arguments);
    if (!watch)
        return std::unexpected(std::move(watch.error()));
    _watch = std::move(*watch);
    return _installation.exchange();
}

// Held open from then on: what was checked is what is unpacked.
Result<FileDescriptor> Updater::downloadPackage(const UpdateInformation& information) const
{
    if (auto begun = _installation.beginStaging(); !begun)
        return updaterError(ZRKUpdaterErrorDownload, std::move(begun.error()));
    auto part = _installation.stagingFolder() + "/download";
    auto package = _installation.stagingFolder() + packageName;
    FileDescriptor file(::open(part.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        return updaterError(ZRKUpdaterErrorDownload, systemError(errno, "'" + part + "' could not be written."));
    auto limit = information.size != 0 ? information.size : UpdateFeed::maximumPackageSize;
    if (auto saved = Download(_configuration).save(information.package, limit, file.get()); !saved)
        return downloadError(ZRKUpdaterErrorDownload, std::move(saved.error()));
    if (::rename(part.c_str(), package.c_str()) != 0)
        return updaterError(ZRKUpdaterErrorMovePackage, systemError(errno, "'" + part + "' could not be moved."));
    return file;
}

Result<InstallationManifest> Updater::unpackPackage(int package) const
{
    auto length =
        PackageSignature::verifiedLength(package, _installation.stagingFolder() + packageName, _configuration.key);
    if (!length)
        return updaterError(ZRKUpdaterErrorValidate, std::move(length.error()));
    if (auto unpacked = PackageArchive::unpack(package, *length, _installation.stagedProduct()); !unpacked) {
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
