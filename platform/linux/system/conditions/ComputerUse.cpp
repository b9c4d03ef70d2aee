#include "platform/ComputerUse.h"

#include "platform/Clock.h"
#include "platform/linux/system/conditions/DeviceEvents.h"
#include "platform/linux/system/conditions/LidSwitch.h"
#include "platform/linux/system/conditions/LoginSessions.h"
#include "platform/linux/system/conditions/TerminalUse.h"
#include "platform/linux/system/conditions/ThreadCondition.h"

#include <algorithm>

namespace platform {

namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;

// How long ago something was that the login manager stamped with two clocks, of which one was set perhaps and the other
// stood still in sleep: as the real clock says, where that is possible.
nanoseconds ageOf(std::uint64_t real, std::uint64_t monotonic)
{
    const auto now = readClocks();
    const auto awake = now.awake - nanoseconds(microseconds(monotonic));
    const auto longest = awake + (now.sinceBoot - now.awake);
    const auto age = now.sinceEpoch - nanoseconds(microseconds(real));
    return std::max(std::clamp(age, awake, longest), nanoseconds(0));
}

bool isPassive(const LoginState& state, const LidSwitch& lid)
{
    const bool isSomebodyThere =
        std::ranges::any_of(state.sessions, [](const auto& each) { return each.isOfUser() && each.isLocal; });
    const bool isClosed = lid.isLidClosed().value_or(state.isLidClosed);
    return !isSomebodyThere || (isClosed && !state.isDocked && !lid.isDocked() && !hasExternalDisplay());
}

class UseFollower {
public:
    explicit UseFollower(ValueTeller<ComputerUse>& teller)
        : _teller(teller),
          _lid([this] { read(); }),
          _displays({"drm"}, [this] { read(); }),
          _terminals([this] { read(); })
    {
        _sessions = std::make_unique<LoginSessions>([this](const auto& state) { publish(state); });
    }

private:
    void read()
    {
        if (_sessions)
            _sessions->read();
    }

    void publish(const std::optional<LoginState>& state)
    {
        if (!state) {
            _noticed.reset();
            _terminals.follow({});
            _teller.publish({});
            return;
        }
        auto since = unusedSince(*state);
        // Told once more, the same moment comes out a little different by the reading of the clocks.
        constexpr std::chrono::milliseconds same{500};
        if (since && _noticed && std::chrono::abs(*since - *_noticed) < same)
            since = _noticed;
        _noticed = since;
        _teller.publish({.isKnown = true, .isPassive = isPassive(*state, _lid), .unusedSince = since});
    }

    std::optional<nanoseconds> unusedSince(const LoginState& state)
    {
        const auto now = readClocks().sinceBoot;
        std::vector<std::string> terminals;
        if (state.isIdle) {
            _terminals.follow({});
            // Where nobody is logged in at all it does not know since when.
            return state.idleSinceMonotonic == 0 ? _noticed.value_or(now)
                                                 : now - ageOf(state.idleSinceReal, state.idleSinceMonotonic);
        }
        // Of sessions of text it tells only when it is asked.
        bool isInUse = state.inhibited.find("idle") != std::string::npos || state.sessions.empty();
        for (const auto& session : state.sessions) {
            if (session.isOfUser() && session.isText())
                terminals.push_back(session.terminal);
            else if (session.isOfUser() && !session.isIdle)
                isInUse = true;
        }
        const auto age = _terminals.follow(isInUse ? std::vector<std::string>() : std::move(terminals));
        return age ? std::optional(now - *age) : std::nullopt;
    }

    ValueTeller<ComputerUse>& _teller;
    std::optional<nanoseconds> _noticed; // unused since
    LidSwitch _lid;
    DeviceEvents _displays;
    TerminalUse _terminals;
    std::unique_ptr<LoginSessions> _sessions;
};

} // namespace

FollowedCondition<ComputerUse> followComputerUse(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return ThreadCondition<ComputerUse, UseFollower>::follow(std::move(queue), std::move(handler));
}

} // namespace platform
