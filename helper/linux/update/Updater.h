#pragma once

#include "helper/HelperOptions.h"
#include "helper/linux/installation/Installation.h"
#include "helper/linux/update/UpdateWatch.h"
#include "helper/update/Download.h"
#include "helper/update/UpdateConfiguration.h"
#include "helper/update/UpdateFeed.h"
#include "platform/Error.h"

#include <optional>
#include <string>
#include <vector>

namespace helper {

// Looks for a newer version, and installs it. Every failure is an error of the updater's domain, which has what went
// wrong inside as its underlying error. One call at a time.
class Updater {
public:
    explicit Updater(const HelperOptions& options) : _configuration(options.updates), _arguments(options.arguments) { }

    // What the feed says about a newer version. Error 0 when there is none, 9 when it is not this machine's turn.
    platform::Result<UpdateInformation> check(const Download::GivenUp& isGivenUp = {}) const;

    // The new version is in place when this returns success, and on trial; this program is still the old one.
    platform::Result<void> install();

    // Ends what an interrupted install had begun. A version on trial that nobody watches is watched from now on.
    void recover() const;

private:
    std::string installedVersion() const;
    platform::Result<platform::FileDescriptor> downloadPackage(const UpdateInformation& information) const;
    platform::Result<InstallationManifest> unpackPackage(int package) const;
    platform::Result<void> put(const UpdateInformation& information);
    void watchTrial() const;
    platform::Result<void> replace(InstallationManifest staged);

    UpdateConfiguration _configuration;
    std::vector<std::string> _arguments;
    Installation _installation;
    std::optional<UpdateWatch> _watch; // while the new version is in place and this one still at work
};

} // namespace helper
