#pragma once

#include "platform/Format.h"

#include <cstdint>
#include <initializer_list>
#include <string>

// The unified log's message types.
using LogLevel = std::uint8_t;
inline constexpr LogLevel LogLevelDefault = 0;
inline constexpr LogLevel LogLevelInfo = 1;
inline constexpr LogLevel LogLevelDebug = 2;
inline constexpr LogLevel LogLevelError = 16;

using LogArguments = std::initializer_list<platform::FormatArgument>;

// True when messages go to the unified log, false when they go to the legacy one. Set by ZRKLogInit.
extern bool ZRKLOG_UNIFIED;

// Opens the log, once, first thing in the program. A file that cannot be opened is reported to the system's log, and
// the log goes on without it.
void ZRKLogInit(const char* subsystem, const char* category);

// One message to every sink, in order: the unified log, or the legacy one (debug messages excepted), then the file.
// Any thread. The format is that of platform::formatString.
void ZRKLogMessage(LogLevel level, const char* format, LogArguments arguments = {});

// The sinks by themselves.
void ZRKLogUnified(LogLevel level, const char* format, LogArguments arguments = {}); // when ZRKLOG_UNIFIED
void _ZRKLog(int level, const std::string& format, LogArguments arguments = {}); // legacy; only the low byte of level
void ZRKLogWithLevel2(LogLevel level, const char* format,
                      LogArguments arguments = {}); // file; the level is not written
// Returns when every legacy message so far has been handed over. Needs an earlier _ZRKLog.
void _ZRKLogSync();

// The folder of the log files, without a trailing slash: the system's for root, otherwise the user's.
std::string ZRKLogGetParentPath();
