#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace logtool {

// The keys of a message that a predicate may ask for. Every one is a text.
enum class Field { Subsystem, Category, EventMessage, MessageType, ProcessImagePath };
inline constexpr std::size_t FieldCount = 5;
inline constexpr std::array<std::string_view, FieldCount> FieldNames = {"subsystem", "category", "eventMessage",
                                                                        "messageType", "processImagePath"};

// One message of the system log. A text that the message has not is empty.
struct LogRecord {
    std::string timestamp; // "2026-11-20 09:56:22.123456+0100"
    std::array<std::string, FieldCount> fields;
    std::int64_t processID = 0;

    std::string& operator[](Field field) { return fields[static_cast<std::size_t>(field)]; }
    const std::string& operator[](Field field) const { return fields[static_cast<std::size_t>(field)]; }
};

} // namespace logtool
