#include "helper/HelperParts.h"

#include "helper/linux/installation/Installation.h"
#include "helper/linux/PolkitRules.h"
#include "helper/linux/programs/ProgramChoice.h"
#include "helper/linux/snapshots/BtrfsSnapshots.h"
#include "helper/linux/update/OwnedInstallation.h"
#include "helper/linux/update/PackageUpdates.h"
#include "platform/SystemInformation.h"

namespace helper {

namespace {

std::shared_ptr<ProductInstallation> installationOf(const HelperOptions& options)
{
    const auto manifest = Installation().manifest();
    if (manifest && !manifest->package.empty())
        return std::make_shared<PackageUpdates>(manifest->package);
    return std::make_shared<OwnedInstallation>(options);
}

std::shared_ptr<AuthorityRules> rulesOf(const HelperOptions& options)
{
    return options.rulesFolder.empty() ? nullptr : std::make_shared<PolkitRules>(options.rulesFolder);
}

} // namespace

HelperParts HelperParts::ofSystem(const HelperOptions& options)
{
    return {.programs = std::make_shared<ProgramChoice>(
                platform::systemPath("/Library/Preferences/com.zerkolin.brevane.program.plist"),
                ProgramCatalog::installedFolder()),
            .snapshots = std::make_shared<BtrfsSnapshots>(),
            .installation = installationOf(options),
            .rules = rulesOf(options)};
}

} // namespace helper
