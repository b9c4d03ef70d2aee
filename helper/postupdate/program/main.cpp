#include "diagnostics/log/ZRKLog.h"
#include "helper/postupdate/PostUpdate.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sysexits.h>

using namespace helper;

namespace {

constexpr const char* usage = "usage: com.zerkolin.brevane.post-update\n"
                              "Waits for a new version of Brevane, and starts it in place of the application that "
                              "started this program.\n"
                              "Signal 15 ends it: then there will be none.\n";

const char* textOf(PostUpdate::Outcome outcome)
{
    switch (outcome) {
    case PostUpdate::Outcome::Started:
        return "The new version is started.";
    case PostUpdate::Outcome::NoNewVersion:
        return "There is no new version.";
    case PostUpdate::Outcome::NotStarted:
        return "The new version could not be started.";
    }
    return "";
}

} // namespace

int main(int count, char** arguments)
{
    if (count > 1) {
        const bool isAsked = std::string_view(arguments[1]) == "--help";
        std::fputs(usage, isAsked ? stdout : stderr);
        return isAsked ? EXIT_SUCCESS : EX_USAGE;
    }
    ZRKLogInit("com.zerkolin.brevane", "post-update");
    auto outcome = PostUpdate(ProductWatch::create()).run();
    const bool isGood = outcome == PostUpdate::Outcome::Started;
    ZRKLogMessage(isGood ? LogLevelInfo : LogLevelError, "%@", {textOf(outcome)});
    return isGood ? EXIT_SUCCESS : EX_UNAVAILABLE;
}
