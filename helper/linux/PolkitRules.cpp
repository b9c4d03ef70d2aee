#include "helper/linux/PolkitRules.h"

#include "helper/SystemError.h"
#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "protocol/Messages.h"

#include <cerrno>
#include <grp.h>
#include <string_view>
#include <unistd.h>

namespace helper {

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

} // namespace

std::string PolkitRules::path() const
{
    return _folder + fileName;
}

bool PolkitRules::isWritten() const
{
    return ::access(path().c_str(), F_OK) == 0;
}

Result<void> PolkitRules::write() const
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
    platform::removeInterruptedReplacements(path());
    auto written = platform::replaceFile(path(), {reinterpret_cast<const std::uint8_t*>(view.data()), view.size()},
                                         readableByAuthority);
    if (!written)
        return std::unexpected(systemError(written.error(), "'" + path() + "' could not be written."));
    return {};
}

Result<void> PolkitRules::remove() const
{
    bool isGone = ::unlink(path().c_str()) == 0 || errno == ENOENT;
    if (!isGone)
        return std::unexpected(systemError(errno, "'" + path() + "' could not be removed."));
    (void)platform::syncFolder(_folder);
    return {};
}

} // namespace helper
