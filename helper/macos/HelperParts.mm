#include "helper/HelperParts.h"

#include "helper/macos/packages/PackageInstallation.h"
#include "helper/macos/timemachine/TimeMachinePrograms.h"
#include "helper/macos/timemachine/TimeMachineSnapshots.h"

namespace helper {

// Rights are in the system's database alone.
HelperParts HelperParts::ofSystem(const HelperOptions& options)
{
    return {.programs = std::make_shared<TimeMachinePrograms>(),
            .snapshots = std::make_shared<TimeMachineSnapshots>(),
            .installation = std::make_shared<PackageInstallation>(options),
            .rules = nullptr};
}

} // namespace helper
