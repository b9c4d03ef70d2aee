#include "platform/SleepPreventers.h"

#include "platform/linux/system/conditions/ConditionsBus.h"
#include "platform/linux/system/conditions/LoginService.h"
#include "platform/linux/system/conditions/ThreadCondition.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <string_view>

namespace platform {

namespace {

// `what` is a list such as "shutdown:sleep".
bool preventsSleep(std::string_view what, std::string_view mode)
{
    if (mode != "block")
        return false;
    while (!what.empty()) {
        const auto end = std::min(what.find(':'), what.size());
        const auto name = what.substr(0, end);
        if (name == "sleep" || name == "idle")
            return true;
        what.remove_prefix(std::min(end + 1, what.size()));
    }
    return false;
}

std::vector<std::string> namesOfPreventers(sd_bus_message* answer)
{
    std::vector<std::string> names;
    const char* what = nullptr;
    const char* who = nullptr;
    const char* mode = nullptr;
    std::uint32_t process = 0;
    if (sd_bus_message_enter_container(answer, 'a', "(ssssuu)") < 0)
        return names;
    while (sd_bus_message_read(answer, "(ssssuu)", &what, &who, nullptr, &mode, nullptr, &process) > 0) {
        if (preventsSleep(what, mode) && process != static_cast<std::uint32_t>(processIdentifier()))
            names.emplace_back(who);
    }
    std::ranges::sort(names);
    names.erase(std::ranges::unique(names).begin(), names.end());
    return names;
}

// The service tells each time that one comes or goes.
class PreventersFollower {
public:
    explicit PreventersFollower(ValueTeller<SleepPreventers>& teller)
        : _teller(teller),
          _service(LoginService::Name, {propertiesChanged(LoginService::Object)}, [this] { read(); })
    {
        _service.follow();
    }

private:
    void read()
    {
        _service.call(LoginService::Object, LoginService::Manager, "ListInhibitors", {},
                      [this](sd_bus_message* answer) {
                          _teller.publish(answer ? SleepPreventers{.isKnown = true, .names = namesOfPreventers(answer)}
                                                 : SleepPreventers());
                          _service.finishReading();
                      });
    }

    ValueTeller<SleepPreventers>& _teller;
    BusService _service;
};

} // namespace

FollowedCondition<SleepPreventers> followSleepPreventers(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return ThreadCondition<SleepPreventers, PreventersFollower>::follow(std::move(queue), std::move(handler));
}

} // namespace platform
