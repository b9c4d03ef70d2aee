#pragma once

#include "platform/Error.h"
#include "platform/ServicePeer.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace helper {

// The lines of the log about who asked for what. A user's first refusal is logged as it happens; those of the next
// minute are counted and logged in one line, so that nobody can write the log full.
class RefusalLog {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds window{60};

    static void accepted(std::int64_t message, const platform::ServicePeer& sender);
    void refused(std::int64_t message, const platform::ServicePeer& sender, const platform::Error& error,
                 Clock::time_point now);
    // Logs the counts of windows that are over; those of all windows at the end.
    void report(Clock::time_point now);
    void reportAll();

private:
    struct Window {
        Clock::time_point begin;
        std::uint64_t count = 0; // after the first
        std::string program;     // of the latest
    };
    static void write(std::uint32_t user, const Window& counted);

    std::map<std::uint32_t, Window> _windows;
};

} // namespace helper
