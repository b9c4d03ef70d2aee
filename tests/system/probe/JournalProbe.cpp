#include "platform/Root.h"
#include "platform/SystemLog.h"

#include <unistd.h>

int main()
{
    platform::setSystemRoot(platform::installedRoot());
    auto log = platform::SystemLog::create("com.zerkolin.brevane", "probe");
    log->message(0, "a default");
    log->message(1, "an info");
    log->message(2, "a debug");
    log->message(16, "an error");
    log->message(17, "a fault");
    log->message(0, "two\nlines, caf\xE9");
    platform::LegacyLog::open("com.zerkolin.brevane")->send("Warning", "a legacy warning");
    platform::LegacyLog::open("com.zerkolin.brevane")->send("Error", "a legacy error");
    platform::reportToDefaultLog("a report");
    ::usleep(500'000); // the journal looks up a sender's path while the sender lives
}
