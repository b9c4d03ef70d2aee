#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unicode/datefmt.h>

namespace platform {

// The dates of one minute as a format prints them, which differ in two digits.
class MinuteText {
public:
    static constexpr int Length = 60; // seconds

    // nullopt when the format prints no seconds, or prints them in another way in this minute.
    static std::optional<MinuteText> of(const icu::DateFormat& format, std::int64_t minute);

    std::int64_t minute() const { return _minute; } // since 1970
    std::string text(int second) const;

private:
    MinuteText() = default;

    std::int64_t _minute = 0;
    std::string _before;
    std::string _after;
    std::array<std::string, 10> _digits;
};

} // namespace platform
