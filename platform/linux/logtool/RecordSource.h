#pragma once

#include "platform/linux/logtool/LogRecord.h"

#include <expected>
#include <functional>
#include <string>
#include <vector>

namespace logtool {

using RecordVisitor = std::function<void(const LogRecord&)>;

// Visits every message of the log that the product writes, oldest first: the sandbox's own, or the system's journal.
// With subsystems given, messages of others may be left out. The failure says why they cannot be read.
std::expected<void, std::string> visitRecords(const std::vector<std::string>& subsystems, const RecordVisitor& visit);

} // namespace logtool
