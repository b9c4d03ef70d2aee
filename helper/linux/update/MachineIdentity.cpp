#include "helper/update/MachineIdentity.h"

#include "platform/AtomicFile.h"

namespace helper {

platform::Data machineIdentity()
{
    return platform::readFile("/etc/machine-id", 4096).value_or(platform::Data());
}

} // namespace helper
