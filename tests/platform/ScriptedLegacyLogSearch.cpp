#include "tests/platform/ScriptedLegacyLogSearch.h"

#include <map>
#include <mutex>
#include <utility>

namespace scripted::legacylog {

namespace {

std::mutex legacyMutex;
std::map<std::string, std::vector<platform::LegacyLogMessage>> legacyMessages;

} // namespace

void reset()
{
    const std::lock_guard lock(legacyMutex);
    legacyMessages.clear();
}

void setMessages(const std::string& sender, std::vector<platform::LegacyLogMessage> messages)
{
    const std::lock_guard lock(legacyMutex);
    legacyMessages[sender] = std::move(messages);
}

} // namespace scripted::legacylog

namespace platform {

std::vector<LegacyLogMessage> searchLegacyLog(const std::string& sender)
{
    using namespace scripted::legacylog;
    const std::lock_guard lock(legacyMutex);
    return legacyMessages[sender];
}

} // namespace platform
