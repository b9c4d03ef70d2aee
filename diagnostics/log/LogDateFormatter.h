#pragma once

#include <cstddef>
#include <ctime>
#include <string_view>

// Prints dates as "d/MMM/yy, HH:mm:ssZ" with the month names of the locale en_US_POSIX, in the system's current time
// zone: "15/Nov/26, 01:16:04+0100". Keeps the text of the last second. One thread at a time.
class LogDateFormatter {
public:
    // Good until the next call.
    std::string_view text(std::time_t second)
    {
        if (second != _second || _length == 0)
            format(second);
        return {_text, _length};
    }

private:
    void format(std::time_t second);

    std::time_t _second = 0;
    std::size_t _length = 0;
    char _text[64] = {};
};
