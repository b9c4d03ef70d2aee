#pragma once

#include "platform/linux/logtool/LogOptions.h"
#include "platform/linux/logtool/LogRecord.h"

#include <cstdio>
#include <string>

namespace logtool {

// Prints records one by one as they come, and nothing before the first one or the end.
class RecordWriter {
public:
    RecordWriter(std::FILE* out, Style style);

    void write(const LogRecord& record);
    // The end of the array. False when the output did not take everything; errno says why.
    bool finish();

private:
    void put(const std::string& text);

    std::FILE* _out;
    Style _style;
    std::string _line;
    bool _isFirst = true;
};

} // namespace logtool
