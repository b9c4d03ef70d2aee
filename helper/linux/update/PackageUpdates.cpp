#include "helper/linux/update/PackageUpdates.h"

#include "helper/SystemError.h"
#include "messaging/ZRKError.h"
#include "platform/linux/system/packages/PackageManager.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <cerrno>
#include <memory>
#include <utility>

namespace helper {

using platform::Dictionary;
using platform::Error;
using platform::PackageManager;
using platform::PropertyList;
using platform::Result;

namespace {

using FailureKind = PackageManager::Failure::Kind;

Error sentence(const std::string& text)
{
    return systemError(EBADMSG, text); // which adds nothing
}

Error commandInstead(const std::string& command)
{
    return sentence("Brevane was installed as a package, and there is no PackageKit. In a terminal, \"" + command
                    + "\" does it.");
}

std::int64_t codeOf(FailureKind kind, std::int64_t otherwise)
{
    switch (kind) {
    case FailureKind::Missing:
    case FailureKind::Busy:
        return ZRKUpdaterErrorCannotUpdateNow;
    case FailureKind::Network:
        return ZRKUpdaterErrorFetchInfo;
    case FailureKind::Download:
        return ZRKUpdaterErrorDownload;
    case FailureKind::Untrusted:
        return ZRKUpdaterErrorValidate;
    default:
        return otherwise;
    }
}

std::unexpected<Error> updaterError(const PackageManager::Failure& failure, std::int64_t otherwise,
                                    const std::string& command)
{
    const auto code = codeOf(failure.kind, otherwise);
    if (failure.kind == FailureKind::Missing)
        return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code, {}, commandInstead(command)));
    if (failure.text.empty())
        return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code));
    return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code, {}, sentence(failure.text)));
}

std::string commandOfUpdate(const std::string& package)
{
    return "sudo apt install --only-upgrade " + package;
}

} // namespace

Result<PropertyList> PackageUpdates::check(const GivenUp& isGivenUp) const
{
    const auto version = PackageManager::newerVersion(_package, isGivenUp);
    if (!version)
        return updaterError(version.error(), ZRKUpdaterErrorFetchInfo, commandOfUpdate(_package));
    if (!*version)
        return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate));
    return PropertyList(Dictionary{{PayloadKey::Version, **version}, {PayloadKey::HumanVersion, **version}});
}

Result<void> PackageUpdates::install(const GivenUp& isGivenUp)
{
    const auto done = PackageManager::update(_package, isGivenUp);
    if (done && !*done)
        return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate));
    if (done || done.error().kind == FailureKind::GivenUp)
        return {};
    return updaterError(done.error(), ZRKUpdaterErrorInstall, commandOfUpdate(_package));
}

Result<void> PackageUpdates::remove(const PasswordRule&, const GivenUp& isGivenUp)
{
    const auto done = PackageManager::remove(_package, isGivenUp);
    if (done || done.error().kind == FailureKind::GivenUp)
        return {};
    if (done.error().kind == FailureKind::Missing)
        return std::unexpected(commandInstead("sudo apt remove " + _package));
    return std::unexpected(sentence("The package could not be removed. " + done.error().text));
}

} // namespace helper
