#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The rules of one IANA time zone. Instants are whole seconds since 1970 in UTC, offsets seconds east of it. A cheap
// value that several threads may read.
class TimeZone {
public:
    // An instant from which the offset is another one.
    struct Transition {
        std::int64_t at = 0;
        int offsetBefore = 0;
        int offsetAfter = 0;
        bool operator==(const Transition&) const = default;
    };

    // By its IANA name, "Europe/Berlin". Nullopt when the system knows no such zone.
    static std::optional<TimeZone> named(std::string_view name);

    const std::string& name() const { return _name; }

    int offsetAt(std::int64_t instant) const;

    // The first change of the offset after the instant, and the last one at or before it; nullopt when there is none.
    std::optional<Transition> nextTransition(std::int64_t instant) const;
    std::optional<Transition> lastTransition(std::int64_t instant) const;

private:
    struct Native;
    TimeZone(std::string name, std::shared_ptr<const Native> native);

    std::string _name;
    std::shared_ptr<const Native> _native;
};

} // namespace platform
