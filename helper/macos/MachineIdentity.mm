#include "helper/update/MachineIdentity.h"

#include <unistd.h>
#include <uuid/uuid.h>

namespace helper {

platform::Data machineIdentity()
{
    uuid_t identity{};
    constexpr timespec limit{5, 0};
    if (::gethostuuid(identity, &limit) != 0)
        return {};
    return {std::begin(identity), std::end(identity)};
}

} // namespace helper
