#pragma once

#include "helper/AuthorityRules.h"
#include "helper/enforcement/BackupPrograms.h"
#include "helper/HelperOptions.h"
#include "helper/ProductInstallation.h"
#include "helper/snapshots/LocalSnapshots.h"

#include <memory>

namespace helper {

// What serves the helper on its system.
struct HelperParts {
    std::shared_ptr<BackupPrograms> programs;
    std::shared_ptr<LocalSnapshots> snapshots;
    std::shared_ptr<ProductInstallation> installation;
    std::shared_ptr<AuthorityRules> rules; // null when the stored rights are all that the authority goes by

    // Those of this system.
    static HelperParts ofSystem(const HelperOptions& options);
};

} // namespace helper
