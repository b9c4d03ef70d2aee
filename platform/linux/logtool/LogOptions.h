#pragma once

#include "platform/linux/logtool/Predicate.h"

#include <expected>
#include <string>
#include <vector>

namespace logtool {

inline constexpr const char* Usage =
    "usage: log show [--predicate PREDICATE] [--style json|ndjson] [--info] [--debug]\n"
    "Prints the messages of the system log, oldest first, as JSON.\n"
    "  --predicate PREDICATE   only those that match, as in:\n"
    "                          (subsystem == \"com.zerkolin.brevane\") && (processImagePath endswith \"brevane\")\n"
    "                          keys: subsystem, category, eventMessage, messageType, processImagePath\n"
    "  --style json            one array (the default)\n"
    "  --style ndjson          one object a line\n"
    "  --info, --debug         messages of these types too\n";

enum class Style { Json, LineJson };

struct LogOptions {
    Predicate predicate;
    Style style = Style::Json;
    bool includesInfo = false;
    bool includesDebug = false;
    bool asksForHelp = false;

    // The error is a sentence.
    static std::expected<LogOptions, std::string> parse(const std::vector<std::string>& arguments);

    bool wants(const LogRecord& record) const;
};

} // namespace logtool
