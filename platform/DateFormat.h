#pragma once

#include <memory>
#include <string>

namespace platform {

enum class DateStyle { None, Short, Medium };

// Prints dates in the user's locale and time zone, both as they are when the formatter is made. One thread
// at a time.
class DateFormat {
public:
    // None leaves the date, or the time, out.
    static DateFormat withStyles(DateStyle date, DateStyle time);
    // By its IANA name. A zone that is not known changes nothing.
    void setTimeZone(const std::string& name);

    ~DateFormat();
    DateFormat(DateFormat&&) noexcept;
    DateFormat& operator=(DateFormat&&) noexcept;

    // Of seconds since 1970. Dates of one minute after another take the least time.
    std::string stringFromDate(double seconds);

private:
    struct Native;
    explicit DateFormat(std::unique_ptr<Native> native);
    std::unique_ptr<Native> _native;
};

} // namespace platform
