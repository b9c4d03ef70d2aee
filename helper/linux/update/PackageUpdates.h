#pragma once

#include "helper/ProductInstallation.h"

#include <string>
#include <utility>

namespace helper {

// Where a package manager owns the installation: this program replaces and removes no file then, and asks the system's
// own service to do it. One that is not there makes an error that names the command.
class PackageUpdates final : public ProductInstallation {
public:
    explicit PackageUpdates(std::string package) : _package(std::move(package)) { }

    void recover() override { }
    platform::Result<platform::PropertyList> check(const GivenUp& isGivenUp) const override;
    // Giving up the wait, as when the package manager ends this program for the next version, is a success.
    platform::Result<void> install(const GivenUp& isGivenUp) override;
    bool isManagedElsewhere() const override { return true; }
    bool waitForTrial(std::chrono::milliseconds) const override { return true; }
    // The same. The package's scripts end this program, and take nothing of the settings away.
    platform::Result<void> remove(const PasswordRule& rule, const GivenUp& isGivenUp) override;

private:
    std::string _package;
};

} // namespace helper
