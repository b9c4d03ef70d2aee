#include "helper/update/UpdaterErrors.h"

#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"

#include <utility>

namespace helper {

using platform::Error;

namespace {

constexpr std::int64_t tooManyRequests = 429;

} // namespace

std::unexpected<Error> updaterError(std::int64_t code)
{
    return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code));
}

std::unexpected<Error> updaterError(std::int64_t code, Error reason)
{
    return std::unexpected(ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, code, {}, std::move(reason)));
}

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

} // namespace helper
