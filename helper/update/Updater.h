#pragma once

#include "helper/installation/Installation.h"
#include "helper/update/Download.h"
#include "helper/update/UpdateConfiguration.h"
#include "helper/update/UpdateFeed.h"
#include "platform/Error.h"

#include <string>

namespace helper {

// Looks for a newer version, and installs it. Every failure is an error of the updater's domain, which has what went
// wrong inside as its underlying error. One call at a time.
class Updater {
public:
    explicit Updater(UpdateConfiguration configuration) : _configuration(std::move(configuration)) { }

    // What the feed says about a newer version. Error 0 when there is none, 9 when it is not this machine's turn.
    platform::Result<UpdateInformation> check(const Download::GivenUp& isGivenUp = {}) const;

    // The new version is in place when this returns success; this program is still the old one.
    platform::Result<void> install() const;

    // Ends what an interrupted install had begun.
    void recover() const;

private:
    std::string installedVersion() const;
    platform::Result<std::string> downloadPackage(const UpdateInformation& information) const;
    platform::Result<InstallationManifest> unpackPackage(const std::string& package) const;

    UpdateConfiguration _configuration;
    Installation _installation;
};

} // namespace helper
