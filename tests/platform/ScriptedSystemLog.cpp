#include "tests/platform/ScriptedSystemLog.h"

#include <mutex>
#include <utility>

namespace scripted::log {

namespace {

struct Record {
    std::mutex mutex;
    std::vector<Message> messages;
};

Record& record()
{
    static Record* const shared = new Record;
    return *shared;
}

void append(Message message)
{
    const std::lock_guard lock(record().mutex);
    record().messages.push_back(std::move(message));
}

class PlayedSystemLog final : public platform::SystemLog {
public:
    PlayedSystemLog(std::string subsystem, std::string category)
        : _subsystem(std::move(subsystem)),
          _category(std::move(category))
    {
    }

    void message(std::uint8_t type, std::string_view text) override
    {
        append({Sink::Unified, _subsystem, _category, type, {}, std::string(text)});
    }

private:
    std::string _subsystem;
    std::string _category;
};

class PlayedLegacyLog final : public platform::LegacyLog {
public:
    explicit PlayedLegacyLog(std::string facility) : _facility(std::move(facility)) { }

    void send(std::string_view level, std::string_view message) override
    {
        append({Sink::Legacy, _facility, {}, 0, std::string(level), std::string(message)});
    }

private:
    std::string _facility;
};

} // namespace

void reset()
{
    const std::lock_guard lock(record().mutex);
    record().messages.clear();
}

std::vector<Message> messages()
{
    const std::lock_guard lock(record().mutex);
    return record().messages;
}

} // namespace scripted::log

namespace platform {

std::unique_ptr<SystemLog> SystemLog::create(const std::string& subsystem, const std::string& category)
{
    return std::make_unique<scripted::log::PlayedSystemLog>(subsystem, category);
}

void reportToDefaultLog(std::string_view text)
{
    scripted::log::append({scripted::log::Sink::Default, {}, {}, 16, {}, std::string(text)});
}

std::unique_ptr<LegacyLog> LegacyLog::open(const std::string& facility)
{
    return std::make_unique<scripted::log::PlayedLegacyLog>(facility);
}

} // namespace platform
