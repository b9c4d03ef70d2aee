#include "platform/linux/logtool/LogOptions.h"
#include "platform/linux/logtool/RecordSource.h"
#include "platform/linux/logtool/RecordWriter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sysexits.h>

using namespace logtool;

int main(int argc, char** argv)
{
    const auto options = LogOptions::parse({argv + 1, argv + argc});
    if (!options) {
        std::fprintf(stderr, "log: %s\n%s", options.error().c_str(), Usage);
        return EX_USAGE;
    }
    if (options->asksForHelp) {
        std::fputs(Usage, stdout);
        return EX_OK;
    }
    RecordWriter writer(stdout, options->style);
    const auto visited = visitRecords(options->predicate.subsystems(), [&](const LogRecord& record) {
        if (options->wants(record))
            writer.write(record);
    });
    if (!visited) {
        // No end of the array, so that nobody takes what there is for all.
        std::fprintf(stderr, "log: the log cannot be read: %s\n", visited.error().c_str());
        return EX_IOERR;
    }
    if (writer.finish())
        return EX_OK;
    std::fprintf(stderr, "log: the output cannot be written: %s\n", std::strerror(errno));
    return EX_IOERR;
}
