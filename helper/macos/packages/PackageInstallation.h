#pragma once

#include "helper/HelperOptions.h"
#include "helper/macos/packages/PackageTools.h"
#include "helper/ProductInstallation.h"

#include <string>

namespace helper {

// The product as an installer package, which the system's installer puts in place and whose receipt says what it
// consists of.
class PackageInstallation final : public ProductInstallation {
public:
    struct Places {
        PackageTools tools;
        std::string version;                            // that is installed
        std::string staging = "/var/db/brevane/update"; // for this program alone
        // While it is there, the package's scripts leave the running helper alone.
        std::string installing = "/var/run/com.zerkolin.brevane.scheduler.installing";
    };

    static constexpr const char* Identifier = "com.zerkolin.brevane"; // of the package

    explicit PackageInstallation(const HelperOptions& options);
    PackageInstallation(UpdateConfiguration configuration, Places places);

    void recover() override;
    platform::Result<platform::PropertyList> check(const GivenUp& isGivenUp) const override;
    platform::Result<void> install(const GivenUp& isGivenUp) override;
    bool isManagedElsewhere() const override { return false; }
    bool waitForTrial(std::chrono::milliseconds) const override { return true; } // there is none
    // What the receipt names, and nothing else; then the receipt.
    platform::Result<void> remove(const PasswordRule& rule, const GivenUp& isGivenUp) override;

private:
    platform::Result<void> put(const std::string& address, std::uint64_t size) const;
    platform::Result<void> validate(int file, const std::string& package) const;

    const UpdateConfiguration _configuration;
    const Places _places;
};

} // namespace helper
