#include "protocol/Messages.h"

#include <array>
#include <cstddef>

namespace {

enum class Need { None, Settings, Uninstall };
using enum Need;

// By message number, ten a line.
constexpr std::array needs{
    None, None,     Settings, Settings, Settings, None,     Settings, None,     None,      None, //
    None, Settings, Settings, Settings, Settings, None,     None,     Settings, None,      None, //
    None, Settings, Settings, Settings, None,     Settings, None,     Settings, Uninstall,
};
static_assert(needs.size() == BRVMessageLast + 1);

} // namespace

std::optional<std::vector<std::string>> BRVAuthorizationRightsForMessage(std::int64_t message)
{
    if (message < 0 || message > BRVMessageLast)
        return std::nullopt;
    switch (needs[static_cast<std::size_t>(message)]) {
    case Settings:
        return std::vector<std::string>{BRVRightModifySettings1, BRVRightModifySettings2};
    case Uninstall:
        return std::vector<std::string>{BRVRightUninstall};
    case None:
        break;
    }
    return std::vector<std::string>();
}
