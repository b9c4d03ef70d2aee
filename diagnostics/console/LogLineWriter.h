#pragma once

#include "diagnostics/console/ConsoleStyles.h"
#include "platform/DateFormat.h"
#include "platform/JSONRecords.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Turns records of the system log into the console's lines: date, sender, message. Prints dates in the user's locale.
// One thread at a time.
class LogLineWriter {
public:
    // What is read of each record, in the order in which append() takes it.
    static constexpr std::array<std::string_view, 5> Keys = {"subsystem", "timestamp", "messageType", "eventMessage",
                                                             "processImagePath"};

    explicit LogLineWriter(ConsoleStyles styles);

    // A line for the record, or none for one that the console leaves out.
    void append(platform::StyledText& text, std::span<const platform::JSONField> fields);

private:
    std::string_view dateText(const platform::JSONField& timestamp);
    const platform::TextAttributes& styleOfMessage(const platform::JSONField& messageType) const;

    ConsoleStyles _styles;
    platform::DateFormat _printer;
    // Many records are of the same second.
    std::optional<std::int64_t> _second;
    std::string _dateOfSecond;
};

// The last component of a path, as the platform counts components: "/usr/bin/log" and "log/" both end with "log".
std::string_view lastPathComponent(std::string_view path);
