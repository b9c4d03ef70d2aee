#include "platform/linux/system/conditions/TerminalUse.h"

#include <algorithm>
#include <ctime>
#include <sys/inotify.h>
#include <sys/stat.h>

namespace platform {

namespace {

using std::chrono::nanoseconds;

nanoseconds timeOf(const timespec& time)
{
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

} // namespace

std::optional<nanoseconds> TerminalUse::follow(std::vector<std::string> terminals)
{
    _sources.clear();
    auto& thread = ConditionsThread::shared();
    timespec clock{};
    ::clock_gettime(CLOCK_REALTIME, &clock);
    std::optional<nanoseconds> age;
    for (const auto& terminal : terminals) {
        struct stat status{};
        if (::stat(("/dev/" + terminal).c_str(), &status) != 0)
            continue;
        const auto own = std::max(timeOf(clock) - timeOf(status.st_atim), nanoseconds(0));
        age = std::min(age.value_or(own), own);
    }
    if (!age)
        return std::nullopt;
    if (*age < InUse) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(nanoseconds(InUse) - *age);
        _sources.push_back(thread.runAfter(left, _handler));
        return std::nullopt;
    }
    for (const auto& terminal : terminals) {
        _sources.push_back(
            thread.watchFile("/dev/" + terminal, IN_ACCESS, [handler = _handler](const inotify_event&) { handler(); }));
    }
    return age;
}

} // namespace platform
