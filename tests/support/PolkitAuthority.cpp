#include "tests/support/PolkitAuthority.h"

#include "platform/linux/system/queues/EventDescriptor.h"

#include <array>
#include <condition_variable>
#include <map>
#include <mutex>
#include <poll.h>
#include <stdexcept>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr const char* Name = "org.freedesktop.PolicyKit1";
constexpr const char* Path = "/org/freedesktop/PolicyKit1/Authority";
constexpr const char* Interface = "org.freedesktop.PolicyKit1.Authority";
constexpr std::uint32_t AllowUserInteraction = 1;

int reply(sd_bus_message* call, bool isAuthorized, bool isChallenge, const char* key = nullptr, const char* value = "")
{
    return key ? sd_bus_reply_method_return(call, "(bba{ss})", isAuthorized, isChallenge, 1, key, value)
               : sd_bus_reply_method_return(call, "(bba{ss})", isAuthorized, isChallenge, 0);
}

int readCall(sd_bus_message* message, PolkitAuthority::Call& call)
{
    const char* kind = "";
    const char* name = "";
    const char* action = "";
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_STRUCT, "sa{sv}");
    if (result >= 0)
        result = sd_bus_message_read(message, "s", &kind);
    if (result >= 0)
        result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv")) > 0) {
        const char* key = "";
        result = sd_bus_message_read(message, "s", &key);
        if (result >= 0)
            result = std::string(key) == "name" ? sd_bus_message_read(message, "v", "s", &name)
                                                : sd_bus_message_skip(message, "v");
        if (result >= 0)
            result = sd_bus_message_exit_container(message);
    }
    if (result < 0 || sd_bus_message_exit_container(message) < 0 || sd_bus_message_exit_container(message) < 0
        || sd_bus_message_read(message, "s", &action) < 0)
        return -EINVAL;
    call = {kind, name, action, 0, 0};
    result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{ss}");
    while (result >= 0 && (result = sd_bus_message_read(message, "{ss}", nullptr, nullptr)) > 0)
        ++call.detailCount;
    if (result >= 0)
        result = sd_bus_message_exit_container(message);
    return result < 0 ? result : sd_bus_message_read(message, "u", &call.flags);
}

} // namespace

// The bus, its messages and the script belong to whoever holds the lock.
struct PolkitAuthority::State {
    void open();
    void close();
    void serve();
    int check(sd_bus_message* message);
    int answer(sd_bus_message* message, const Call& call);
    int answerFromGrants(sd_bus_message* message, const Call& call);
    int revoke(sd_bus_message* message);
    void wake() const { signal.signal(); }

    static int handleCheck(sd_bus_message* message, void* state, sd_bus_error*)
    {
        return static_cast<State*>(state)->check(message);
    }
    static int handleRevoke(sd_bus_message* message, void* state, sd_bus_error*)
    {
        return static_cast<State*>(state)->revoke(message);
    }

    mutable std::mutex mutex;
    mutable std::condition_variable called;
    sd_bus* bus = nullptr;
    const platform::EventDescriptor signal;
    bool isStopping = false;
    bool isCrashing = false;
    std::map<std::string, Answer> script;
    std::vector<Call> calls;
    std::vector<std::string> revoked;
    std::vector<std::pair<sd_bus_message*, Call>> hanging;
    std::map<std::pair<std::string, std::string>, std::string> grants; // subject and action to id
    unsigned lastGrant = 0;
    std::thread thread;
};

void PolkitAuthority::State::open()
{
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})", &State::handleCheck,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("RevokeTemporaryAuthorizationById", "s", "", &State::handleRevoke, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    if (sd_bus_open_system(&bus) < 0 || sd_bus_add_object_vtable(bus, nullptr, Path, Interface, methods, this) < 0
        || sd_bus_request_name(bus, Name, 0) < 0)
        throw std::runtime_error("the authority can't serve on the bus");
}

void PolkitAuthority::State::close()
{
    for (const auto& [message, call] : hanging)
        sd_bus_message_unref(message);
    hanging.clear();
    grants.clear();
    sd_bus_close_unref(std::exchange(bus, nullptr));
}

void PolkitAuthority::State::serve()
{
    std::unique_lock lock(mutex);
    while (!isStopping) {
        while (bus && sd_bus_process(bus, nullptr) > 0) { }
        if (std::exchange(isCrashing, false))
            close();
        const short events = static_cast<short>(bus ? std::max(sd_bus_get_events(bus), 0) : 0);
        std::array<pollfd, 2> descriptors = {{{bus ? sd_bus_get_fd(bus) : -1, events, 0}, {signal.get(), POLLIN, 0}}};
        lock.unlock();
        ::poll(descriptors.data(), descriptors.size(), -1);
        signal.reset();
        lock.lock();
    }
}

int PolkitAuthority::State::check(sd_bus_message* message)
{
    Call call = {};
    if (readCall(message, call) < 0)
        return -EINVAL;
    calls.push_back(call);
    called.notify_all();
    return answer(message, call);
}

int PolkitAuthority::State::answer(sd_bus_message* message, const Call& call)
{
    const auto scripted = script.find(call.action);
    const bool isInteractive = (call.flags & AllowUserInteraction) != 0;
    switch (scripted == script.end() ? Answer::Unknown : scripted->second) {
    case Answer::Authorized:
        return reply(message, true, false);
    case Answer::KeptGrant:
        return answerFromGrants(message, call);
    case Answer::Challenge:
        return reply(message, false, true);
    case Answer::Dismissed:
        return isInteractive ? reply(message, false, false, "polkit.dismissed", "true") : reply(message, false, true);
    case Answer::Denied:
        return reply(message, false, false);
    case Answer::Hang:
        hanging.emplace_back(sd_bus_message_ref(message), call);
        return 1;
    case Answer::Crash:
        isCrashing = true;
        return 1;
    case Answer::Unknown:
        break;
    }
    return sd_bus_reply_method_errorf(message, "org.freedesktop.PolicyKit1.Error.Failed", "Action %s is not registered",
                                      call.action.c_str());
}

int PolkitAuthority::State::answerFromGrants(sd_bus_message* message, const Call& call)
{
    const auto key = std::make_pair(call.subjectName, call.action);
    if ((call.flags & AllowUserInteraction) != 0 && !grants.contains(key))
        grants[key] = "tmpauthz" + std::to_string(++lastGrant);
    const auto grant = grants.find(key);
    if (grant == grants.end())
        return reply(message, false, true);
    return reply(message, true, false, "polkit.temporary_authorization_id", grant->second.c_str());
}

int PolkitAuthority::State::revoke(sd_bus_message* message)
{
    const char* id = nullptr;
    if (sd_bus_message_read(message, "s", &id) < 0)
        return -EINVAL;
    revoked.emplace_back(id);
    std::erase_if(grants, [&](const auto& grant) { return grant.second == id; });
    return sd_bus_reply_method_return(message, "");
}

PolkitAuthority::PolkitAuthority() : _state(std::make_unique<State>())
{
    _state->open();
    _state->thread = std::thread([state = _state.get()] { state->serve(); });
}

PolkitAuthority::~PolkitAuthority()
{
    {
        const std::lock_guard lock(_state->mutex);
        _state->isStopping = true;
        _state->wake();
    }
    _state->thread.join();
    _state->close();
}

void PolkitAuthority::setAnswer(const std::string& action, Answer answer)
{
    const std::lock_guard lock(_state->mutex);
    _state->script[action] = answer;
    for (const auto& [message, call] : std::exchange(_state->hanging, {})) {
        _state->answer(message, call);
        sd_bus_message_unref(message);
    }
    _state->wake();
}

void PolkitAuthority::restart()
{
    const std::lock_guard lock(_state->mutex);
    if (!_state->bus)
        _state->open();
    _state->wake();
}

std::vector<PolkitAuthority::Call> PolkitAuthority::calls() const
{
    return waitForCalls(0);
}

std::vector<PolkitAuthority::Call> PolkitAuthority::waitForCalls(std::size_t count) const
{
    std::unique_lock lock(_state->mutex);
    _state->called.wait_for(lock, std::chrono::seconds(10), [&] { return _state->calls.size() >= count; });
    return _state->calls;
}

std::vector<std::string> PolkitAuthority::revoked() const
{
    const std::lock_guard lock(_state->mutex);
    return _state->revoked;
}
