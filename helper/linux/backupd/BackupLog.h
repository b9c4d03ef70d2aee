#pragma once

#include "platform/SystemLog.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

namespace helper {

// The log of the system's backups, under the name by which the system version at hand knows it.
class BackupLog {
public:
    static constexpr std::uint8_t Default = 0;
    static constexpr std::uint8_t Error = 16;

    BackupLog();
    void message(std::uint8_t type, std::string_view text);

private:
    std::unique_ptr<platform::SystemLog> _log;
    std::unique_ptr<platform::LegacyLog> _legacyLog;
};

// Takes what a program prints apart into lines for the log. However much that is, neither the log nor the memory fills
// up: of a long output the beginning and the end are kept.
class OutputLines {
public:
    static constexpr std::size_t FirstLines = 1000;
    static constexpr std::size_t LastLines = 100;
    static constexpr std::size_t MaximumLineSize = 2000; // bytes; the rest of a line is left out

    explicit OutputLines(BackupLog& log) : _log(log) { }

    void add(std::string_view bytes);
    // The end of the output: what was kept back.
    void finish();

private:
    void endLine();

    BackupLog& _log;
    std::string _line;
    std::size_t _count = 0; // of lines
    std::deque<std::string> _last;
};

} // namespace helper
