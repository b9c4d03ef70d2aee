#include "helper/PasswordRule.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/installation/FileTree.h"
#include "helper/SystemError.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/AtomicFile.h"
#include "platform/Authorization.h"
#include "platform/Folder.h"
#include "protocol/Messages.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <string_view>
#include <unistd.h>

namespace helper {

using platform::Array;
using platform::Dictionary;
using platform::Result;

namespace {

constexpr const char* fileName = "/49-com.zerkolin.brevane.rules";
constexpr mode_t readableByAuthority = 0644;

// The group of administrators, as the system has it.
std::string administrators()
{
    for (const char* name : {"sudo", "wheel"}) {
        if (::getgrnam(name))
            return name;
    }
    return {};
}

Result<void> defineRule(const char* rule)
{
    auto definition = platform::Authorization::right(BRVRightModifySettings1).value_or(Dictionary());
    definition.set("rule", Array{rule});
    return ZRKAuthorizationManager::setAuthorizationRights({{BRVRightModifySettings1, std::move(definition)}});
}

} // namespace

std::string PasswordRule::rulesPath() const
{
    return _rulesFolder + fileName;
}

// The stricter state comes first, so that a crash never grants more than is stored.
Result<void> PasswordRule::setAllowsWithoutPassword(bool allowed) const
{
    if (!allowed) {
        auto removed = removeRules();
        return removed ? defineRule("authenticate-admin") : removed;
    }
    auto defined = defineRule("is-admin");
    if (!defined || _rulesFolder.empty())
        return defined;
    auto written = writeRules();
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
    if (_rulesFolder.empty())
        return {};
    const bool isOpen = allowsWithoutPassword();
    const bool isWritten = ::access(rulesPath().c_str(), F_OK) == 0;
    if (isOpen == isWritten)
        return {};
    ZRKLogMessage(LogLevelError, "The stored rule and '%@' disagree; changing settings needs a password.",
                  {rulesPath()});
    return isOpen ? defineRule("authenticate-admin") : removeRules();
}

Result<void> PasswordRule::writeRules() const
{
    auto group = administrators();
    std::string text = "// Written by Brevane: administrators change the backup schedule without a password.\n"
                       "polkit.addRule(function(action, subject) {\n"
                       "    if (action.id == \"";
    text.append(BRVRightModifySettings1).append("\" && (subject.user == \"root\"");
    if (!group.empty())
        text.append(" || subject.isInGroup(\"").append(group).append("\")");
    text.append("))\n        return polkit.Result.YES;\n});\n");
    std::string_view view = text;
    platform::removeInterruptedReplacements(rulesPath());
    auto written = platform::replaceFile(rulesPath(), {reinterpret_cast<const std::uint8_t*>(view.data()), view.size()},
                                         readableByAuthority);
    if (!written)
        return std::unexpected(systemError(written.error(), "'" + rulesPath() + "' could not be written."));
    return {};
}

Result<void> PasswordRule::removeRules() const
{
    if (_rulesFolder.empty())
        return {};
    bool isGone = ::unlink(rulesPath().c_str()) == 0 || errno == ENOENT;
    if (!isGone)
        return std::unexpected(systemError(errno, "'" + rulesPath() + "' could not be removed."));
    (void)platform::syncFolder(_rulesFolder);
    return {};
}

} // namespace helper
