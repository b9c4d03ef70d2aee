#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

// A message of the log that predates the unified one, by its keys "Time" (seconds since 1970) and "Message".
struct LegacyLogMessage {
    std::optional<std::string> time;
    std::optional<std::string> message;
};

// Every message whose key "Sender" is this, in the order of the store. Any thread.
std::vector<LegacyLogMessage> searchLegacyLog(const std::string& sender);

} // namespace platform
