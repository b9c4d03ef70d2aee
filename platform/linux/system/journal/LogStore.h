#pragma once

#include "platform/JSONRecords.h"

#include <ctime>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

// A sandbox's system logs: files of JSON objects, one a line, below its root's /var/log.
inline constexpr const char* UnifiedStore = "system.jsonl";
inline constexpr const char* LegacyStore = "asl.jsonl";

// "2026-11-20 09:56:22.123456+0100", in the system's time zone.
std::string logTimestamp(const timespec& time);

// Visits every whole line of the store with the values of the keys, in order. A line that is damaged, or was written
// only in part, is passed over. The failure is an errno value; a store that is not there yet is empty.
std::expected<void, int> readLogStore(const char* store, std::span<const std::string_view> keys,
                                      const JSONRecords::Visitor& visit);

} // namespace platform
