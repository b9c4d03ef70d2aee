#include "platform/BackupRunner.h"
#include "platform/Queue.h"

#include <cstdio>
#include <sysexits.h>
#include <unistd.h>

// Starts a backup of that name that runs the command.
int main(int count, char** arguments)
{
    if (count < 3)
        return EX_USAGE;
    const auto runner =
        platform::BackupRunner::create(platform::Queue::createSerial("starter"), [](const platform::BackupEvent&) { });
    const platform::BackupJob job{.identifier = arguments[1],
                                  .commands = {{arguments + 2, arguments + count}},
                                  .environment = {},
                                  .overdueAfter = {}};
    if (!runner->start(job))
        return EX_UNAVAILABLE;
    std::puts("started");
    std::fflush(stdout);
    ::pause();
}
