#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// The whole seconds since 1970 of a record's "yyyy.MM.dd HH:mm:ss.SSSSSSZZZ", in the Gregorian calendar, with the
// hyphens of the log tool for the full stops or without. nullopt when it is no such moment.
std::optional<std::int64_t> secondsOfTimestamp(std::string_view timestamp);
