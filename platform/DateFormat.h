#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

enum class DateStyle { None, Short, Medium };

// Reads and prints dates in the user's locale and time zone, both as they are when the formatter is made. One thread
// at a time.
class DateFormat {
public:
    // A pattern of Unicode's date fields, such as "yyyy.MM.dd HH:mm:ss".
    static DateFormat withPattern(std::string_view pattern);
    // None leaves the date, or the time, out.
    static DateFormat withStyles(DateStyle date, DateStyle time);
    // By its IANA name. A zone that is not known changes nothing.
    void setTimeZone(const std::string& name);

    ~DateFormat();
    DateFormat(DateFormat&&) noexcept;
    DateFormat& operator=(DateFormat&&) noexcept;

    // In seconds since 1970. nullopt unless the whole text matches and every field is in its range.
    std::optional<double> dateFromString(std::string_view text);
    std::string stringFromDate(double seconds);

private:
    struct Native;
    explicit DateFormat(std::unique_ptr<Native> native);
    std::unique_ptr<Native> _native;
};

} // namespace platform
