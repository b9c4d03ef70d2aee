#pragma once

#include "helper/update/Download.h"
#include "platform/Error.h"
#include "platform/PropertyList.h"

#include <string>

namespace helper {

// Updates and removal where a package manager owns the installation: this program replaces no file then, and asks the
// system's own service to do it. One that is not there makes an error that names the command.
class PackageUpdates {
public:
    explicit PackageUpdates(std::string package) : _package(std::move(package)) { }

    // {Version, HumanVersion} of a newer package. Errors of the updater's domain; 0 when there is none.
    platform::Result<platform::PropertyList> check(const Download::GivenUp& isGivenUp) const;

    // Giving up the wait, as when the package manager ends this program for the next version, is a success of these.
    platform::Result<void> install(const Download::GivenUp& isGivenUp) const;
    platform::Result<void> remove(const Download::GivenUp& isGivenUp) const;

private:
    std::string _package;
};

} // namespace helper
