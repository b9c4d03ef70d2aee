#pragma once

#include "platform/LegacyLogSearch.h"

#include <string>
#include <vector>

// What is in the log that predates the unified one. Any thread.
namespace scripted::legacylog {

void reset(); // nothing
void setMessages(const std::string& sender, std::vector<platform::LegacyLogMessage> messages);

} // namespace scripted::legacylog
