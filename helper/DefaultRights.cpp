#include "helper/DefaultRights.h"

#include "helper/RightsDatabase.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Authorization.h"
#include "protocol/Messages.h"

#include <utility>

namespace helper {

void installDefaultRights()
{
    repairRightsDatabase();
    ZRKAuthorizationManager::Definitions missing;
    for (const char* right : {BRVRightModifySettings1, BRVRightModifySettings2, BRVRightUninstall}) {
        // An administrator's password, asked for: not "is-admin", which would let administrators pass unasked.
        if (!platform::Authorization::right(right))
            missing.emplace_back(right, rightGrantedByRule("authenticate-admin"));
    }
    if (missing.empty())
        return;
    // Whatever comes of it, it is in the log already.
    [[maybe_unused]] auto defined = ZRKAuthorizationManager::setAuthorizationRights(missing);
}

} // namespace helper
