#pragma once

#include "helper/update/Download.h"
#include "helper/update/UpdateConfiguration.h"
#include "helper/update/UpdateFeed.h"
#include "platform/Error.h"

#include <string>

namespace helper {

// Asks the feed. Every failure is an error of the updater's domain, which has what went wrong inside as its underlying
// error.
class FeedCheck {
public:
    explicit FeedCheck(const UpdateConfiguration& configuration) : _configuration(configuration) { }

    // What the feed says about a newer version. Error 0 when there is none, 9 when it is not this machine's turn.
    platform::Result<UpdateInformation> newerThan(const std::string& version,
                                                  const Download::GivenUp& isGivenUp = {}) const;

private:
    const UpdateConfiguration& _configuration;
};

} // namespace helper
