#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scheduling {

// What stands in the way of a backup, in the order in which it is told.
enum class Reason : std::uint8_t {
    Suspended,
    Battery,
    Passive,
    SleepPreventers,
    NotWired,
    Running,
    Maintenance,
    NoProgram,
    Asleep, // of a missed moment alone: the computer slept, or its clock jumped
};

// A set of them.
class Reasons {
public:
    Reasons() = default;
    Reasons(std::initializer_list<Reason> reasons)
    {
        for (const Reason reason : reasons)
            addIf(true, reason);
    }

    void addIf(bool holds, Reason reason) { _bits |= holds ? bit(reason) : 0U; }
    bool has(Reason reason) const { return (_bits & bit(reason)) != 0; }
    bool empty() const { return _bits == 0; }

    // In their order: "suspended", "battery", "passive", "sleepPreventers", "notWired", "running", "maintenance",
    // "noProgram", "asleep".
    std::vector<std::string_view> names() const;
    // By its name; nothing for any other.
    static std::optional<Reason> named(std::string_view name);

    bool operator==(const Reasons&) const = default;

private:
    static unsigned bit(Reason reason) { return 1U << static_cast<unsigned>(reason); }
    unsigned _bits = 0;
};

} // namespace scheduling
