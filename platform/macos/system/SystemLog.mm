#include "platform/SystemLog.h"

#include <asl.h>
#import <Foundation/Foundation.h>
#include <os/log.h>

// The log before the unified one; it is deprecated where that is there.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

namespace platform {

namespace {

API_AVAILABLE(macos(10.12))
void emit(os_log_t log, std::uint8_t type, std::string_view text)
{
    // The text is written to be read: without the mark the log would show none of it.
    os_log_with_type(log, static_cast<os_log_type_t>(type), "%{public}.*s", static_cast<int>(text.size()), text.data());
}

class API_AVAILABLE(macos(10.12)) UnifiedLog final : public SystemLog {
public:
    explicit UnifiedLog(os_log_t log) : _log(log) { }

    void message(std::uint8_t type, std::string_view text) override { emit(_log, type, text); }

private:
    os_log_t _log;
};

class ASLLog final : public LegacyLog {
public:
    explicit ASLLog(asl_object_t client) : _client(client) { }
    ~ASLLog() override { asl_close(_client); }

    void send(std::string_view level, std::string_view message) override
    {
        const asl_object_t made = asl_new(ASL_TYPE_MSG);
        asl_set(made, "Level", std::string(level).c_str());
        asl_set(made, "Message", std::string(message).c_str());
        asl_send(_client, made);
        asl_free(made);
    }

private:
    asl_object_t _client;
};

} // namespace

std::unique_ptr<SystemLog> SystemLog::create(const std::string& subsystem, const std::string& category)
{
    if (@available(macOS 10.12, *))
        return std::make_unique<UnifiedLog>(os_log_create(subsystem.c_str(), category.c_str()));
    return nullptr;
}

void reportToDefaultLog(std::string_view text)
{
    if (@available(macOS 10.12, *))
        emit(OS_LOG_DEFAULT, OS_LOG_TYPE_ERROR, text);
    else
        asl_log(nullptr, nullptr, ASL_LEVEL_ERR, "%s", std::string(text).c_str());
}

std::unique_ptr<LegacyLog> LegacyLog::open(const std::string& facility)
{
    return std::make_unique<ASLLog>(asl_open(nullptr, facility.c_str(), 0));
}

} // namespace platform
