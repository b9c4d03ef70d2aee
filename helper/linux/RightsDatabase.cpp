#include "helper/RightsDatabase.h"

#include "helper/PropertyListFile.h"
#include "platform/linux/system/authorization/RightsStore.h"

#include <algorithm>

namespace helper {

namespace {

bool areDefinitions(const platform::Dictionary& rights)
{
    return std::ranges::all_of(rights, [](const auto& right) { return right.value.dictionary() != nullptr; });
}

} // namespace

void repairRightsDatabase()
{
    // A damaged file is kept under another name.
    (void)PropertyListFile(platform::RightsStore::path(), areDefinitions).open();
}

platform::Dictionary rightGrantedByRule(const char* rule)
{
    return {{"rule", platform::Array{rule}}};
}

} // namespace helper
