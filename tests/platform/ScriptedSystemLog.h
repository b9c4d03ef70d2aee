#pragma once

#include "platform/SystemLog.h"

#include <cstdint>
#include <string>
#include <vector>

// What reached the system's logs. Any thread.
namespace scripted::log {

enum class Sink { Unified, Default, Legacy }; // Default: the unified log's default object

struct Message {
    Sink sink = Sink::Unified;
    std::string subsystem; // the facility of a legacy message
    std::string category;
    std::uint8_t type = 0; // 16 for the default object
    std::string level;     // of legacy messages
    std::string text;
};

void reset();

// Since reset(), in order, all sinks.
std::vector<Message> messages();

} // namespace scripted::log
