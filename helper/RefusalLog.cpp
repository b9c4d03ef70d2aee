#include "helper/RefusalLog.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/ZRKError.h"

namespace helper {

namespace {

// A path may be as long as its owner likes, and hold any byte but NUL.
std::string programText(const platform::ServicePeer& peer)
{
    constexpr std::size_t longest = 256;
    std::string text = peer.program.empty() ? "an unknown program" : "'" + peer.program.substr(0, longest) + "'";
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        character = byte < 0x20 || byte > 0x7e ? '?' : character;
    }
    return text + " (process " + std::to_string(peer.process) + ")";
}

std::string userText(std::uint32_t user)
{
    return "user " + std::to_string(user);
}

} // namespace

void RefusalLog::accepted(std::int64_t message, const platform::ServicePeer& sender)
{
    ZRKLogMessage(LogLevelDefault, "Did message %@ for %@, %@.",
                  {std::to_string(message), userText(sender.user), programText(sender)});
}

void RefusalLog::refused(std::int64_t message, const platform::ServicePeer& sender, const platform::Error& error,
                         Clock::time_point now)
{
    report(now);
    const auto [found, isFirst] = _windows.try_emplace(sender.user, Window{now, 0, {}});
    found->second.program = programText(sender);
    if (!isFirst) {
        ++found->second.count;
        return;
    }
    ZRKLogMessage(ZRKError::logLevelForError(error), "Refused message %@ of %@, %@: %@",
                  {std::to_string(message), userText(sender.user), found->second.program,
                   ZRKError::localizedDescriptionForError(error)});
}

void RefusalLog::report(Clock::time_point now)
{
    std::erase_if(_windows, [&](const auto& entry) {
        const bool isOver = now - entry.second.begin >= window;
        if (isOver)
            write(entry.first, entry.second);
        return isOver;
    });
}

void RefusalLog::reportAll()
{
    for (const auto& [user, counted] : _windows)
        write(user, counted);
    _windows.clear();
}

void RefusalLog::write(std::uint32_t user, const Window& counted)
{
    if (counted.count > 0)
        ZRKLogMessage(LogLevelError, "Refused %@ more messages of %@, the last of %@.",
                      {std::to_string(counted.count), userText(user), counted.program});
}

} // namespace helper
