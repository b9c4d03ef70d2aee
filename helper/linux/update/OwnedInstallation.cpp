#include "helper/linux/update/OwnedInstallation.h"

#include "helper/linux/installation/Installation.h"
#include "helper/PasswordRule.h"

#include <utility>

namespace helper {

platform::Result<platform::PropertyList> OwnedInstallation::check(const GivenUp& isGivenUp) const
{
    auto information = _updater.check(isGivenUp);
    if (!information)
        return std::unexpected(std::move(information.error()));
    return platform::PropertyList(std::move(information->reply));
}

bool OwnedInstallation::waitForTrial(std::chrono::milliseconds limit) const
{
    return Installation().waitForTrial(limit);
}

platform::Result<void> OwnedInstallation::remove(const PasswordRule& rule, const GivenUp&)
{
    return Installation().remove(rule.rulesFile(), [&rule] { return rule.removeRules(); });
}

} // namespace helper
