#include "helper/PasswordRule.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/RightsDatabase.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Authorization.h"
#include "protocol/Messages.h"

#include <algorithm>

namespace helper {

using platform::Dictionary;
using platform::Result;

namespace {

Result<void> defineRule(const char* rule)
{
    auto definition = platform::Authorization::right(BRVRightModifySettings1).value_or(Dictionary());
    for (const auto& entry : rightGrantedByRule(rule))
        definition.set(entry.key, entry.value);
    return ZRKAuthorizationManager::setAuthorizationRights({{BRVRightModifySettings1, std::move(definition)}});
}

} // namespace

// The stricter state comes first, so that a crash never grants more than is stored.
Result<void> PasswordRule::setAllowsWithoutPassword(bool allowed) const
{
    if (!allowed) {
        auto removed = removeRules();
        return removed ? defineRule("authenticate-admin") : removed;
    }
    auto defined = defineRule("is-admin");
    if (!defined || !_rules)
        return defined;
    auto written = _rules->write();
    if (!written)
        (void)defineRule("authenticate-admin");
    return written;
}

bool PasswordRule::allowsWithoutPassword()
{
    const auto definition = platform::Authorization::right(BRVRightModifySettings1).value_or(Dictionary());
    const auto* rules = definition.arrayForKey("rule");
    return rules && std::ranges::find(*rules, platform::PropertyList("is-admin")) != rules->end();
}

Result<void> PasswordRule::takeStricter() const
{
    if (!_rules)
        return {};
    const bool isOpen = allowsWithoutPassword();
    if (isOpen == _rules->isWritten())
        return {};
    ZRKLogMessage(LogLevelError, "The stored rule and '%@' disagree; changing settings needs a password.",
                  {_rules->path()});
    return isOpen ? defineRule("authenticate-admin") : _rules->remove();
}

Result<void> PasswordRule::removeRules() const
{
    return _rules ? _rules->remove() : Result<void>();
}

} // namespace helper
