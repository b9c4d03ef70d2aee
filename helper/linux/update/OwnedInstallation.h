#pragma once

#include "helper/linux/update/Updater.h"
#include "helper/ProductInstallation.h"

namespace helper {

// Files that this program itself replaces and removes.
class OwnedInstallation final : public ProductInstallation {
public:
    explicit OwnedInstallation(const HelperOptions& options) : _updater(options) { }

    void recover() override { _updater.recover(); }
    platform::Result<platform::PropertyList> check(const GivenUp& isGivenUp) const override;
    platform::Result<void> install(const GivenUp&) override { return _updater.install(); }
    bool isManagedElsewhere() const override { return false; }
    bool waitForTrial(std::chrono::milliseconds limit) const override;
    platform::Result<void> remove(const PasswordRule& rule, const GivenUp& isGivenUp) override;

private:
    Updater _updater;
};

} // namespace helper
