#include "helper/update/FeedCheck.h"

#include "helper/update/UpdaterErrors.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <utility>

namespace helper {

platform::Result<UpdateInformation> FeedCheck::newerThan(const std::string& version,
                                                         const Download::GivenUp& isGivenUp) const
{
    auto bytes = Download(_configuration).fetch(_configuration.feed, UpdateFeed::maximumSize, isGivenUp);
    if (!bytes)
        return downloadError(ZRKUpdaterErrorFetchInfo, std::move(bytes.error()));
    auto information = UpdateFeed::informationInFeed(*bytes, _configuration.feed);
    if (!information)
        return information;
    if (information->version <= VersionNumber::parse(version))
        return updaterError(ZRKUpdaterErrorUpToDate);
    if (UpdateFeed::placeOfMachine(*information->reply.stringForKey(PayloadKey::Version)) >= information->share)
        return updaterError(ZRKUpdaterErrorPhasedDeferral);
    return information;
}

} // namespace helper
