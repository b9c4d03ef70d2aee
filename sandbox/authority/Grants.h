#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One process, told from a later one with the same number by when it started.
struct Process {
    std::uint32_t identifier = 0;
    std::uint64_t startTime = 0; // in clock ticks since the machine started

    bool operator==(const Process&) const = default;
    // nullopt when there is no such process.
    static std::optional<Process> running(std::uint32_t identifier);
};

// What processes were allowed to do. A grant holds for five minutes.
class Grants {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds lifetime{300};

    struct Grant {
        std::string identifier;
        Process process;
        std::string action;
        Clock::time_point since;
    };

    const Grant& add(const Process& process, const std::string& action, Clock::time_point now);
    // Null when there is none, or no longer.
    const Grant* find(const Process& process, const std::string& action, Clock::time_point now);
    const std::vector<Grant>& all(Clock::time_point now);

    // False when there is no such grant.
    bool revoke(const std::string& identifier);
    void revokeAll(const Process& process);

private:
    void forgetExpired(Clock::time_point now);

    std::vector<Grant> _grants;
    std::uint64_t _count = 0;
};
