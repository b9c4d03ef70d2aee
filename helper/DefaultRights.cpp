#include "helper/DefaultRights.h"

#include "helper/PropertyListFile.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/linux/system/authorization/RightsStore.h"
#include "protocol/Messages.h"

#include <algorithm>
#include <utility>

namespace helper {

namespace {

bool areDefinitions(const platform::Dictionary& rights)
{
    return std::ranges::all_of(rights, [](const auto& right) { return right.value.dictionary() != nullptr; });
}

} // namespace

void installDefaultRights()
{
    // A damaged file is kept under another name.
    (void)PropertyListFile(platform::RightsStore::path(), areDefinitions).open();
    ZRKAuthorizationManager::Definitions missing;
    for (const char* right : {BRVRightModifySettings1, BRVRightModifySettings2, BRVRightUninstall}) {
        // An administrator's password, asked for: not "is-admin", which would let administrators pass unasked.
        if (!platform::Authorization::right(right))
            missing.emplace_back(right, platform::Dictionary{{"rule", platform::Array{"authenticate-admin"}}});
    }
    if (missing.empty())
        return;
    // Whatever comes of it, it is in the log already.
    [[maybe_unused]] auto defined = ZRKAuthorizationManager::setAuthorizationRights(missing);
}

} // namespace helper
