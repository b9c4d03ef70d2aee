#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

// The system's unified log for one subsystem and category. Any thread may write.
class SystemLog {
public:
    static std::unique_ptr<SystemLog> create(const std::string& subsystem, const std::string& category);
    virtual ~SystemLog() = default;
    // `type` is a message type of the unified log: 0 default, 1 info, 2 debug, 16 error, 17 fault.
    virtual void message(std::uint8_t type, std::string_view text) = 0;
};

// One error message to the unified log's default object, for failures of logging itself.
void reportToDefaultLog(std::string_view text);

// The log of systems that predate the unified one. Used on one queue at a time.
class LegacyLog {
public:
    static std::unique_ptr<LegacyLog> open(const std::string& facility);
    virtual ~LegacyLog() = default;
    // `level` is the text of the message's "Level" key.
    virtual void send(std::string_view level, std::string_view message) = 0;
};

} // namespace platform
