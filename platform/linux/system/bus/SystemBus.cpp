#include "platform/linux/system/bus/SystemBus.h"

#include "platform/linux/system/queues/BlockedSignals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

constexpr std::uint32_t SocketEvent = 0;
constexpr std::uint32_t SignalEvent = 1;

// Never destroyed, since a connection's own thread may outlive main().
struct Shared {
    std::mutex mutex;
    std::shared_ptr<SystemBus> bus;
};

Shared& shared()
{
    static Shared& instance = *new Shared;
    return instance;
}

// What is left until a moment of the monotonic clock in microseconds.
timespec timeUntil(std::uint64_t moment)
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t present =
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
    const std::uint64_t left = moment > present ? moment - present : 0;
    return {static_cast<time_t>(left / 1'000'000), static_cast<long>(left % 1'000'000) * 1000};
}

} // namespace

class SystemBus::Call {
public:
    Call(SystemBus& callBus, const void* callOwner, Completion callCompletion)
        : bus(callBus),
          owner(callOwner),
          completion(std::move(callCompletion))
    {
    }

    SystemBus& bus;
    const void* owner;
    Completion completion;
    BusSlot slot;
    std::list<std::shared_ptr<Call>>::iterator place;
    bool isDone = false;
    std::condition_variable changed;
};

class SystemBus::Watch : public std::enable_shared_from_this<Watch> {
public:
    Watch(SystemBus& watchBus, ChangeHandler watchHandler) : bus(watchBus), handler(std::move(watchHandler)) { }

    SystemBus& bus;
    ChangeHandler handler;
    SignalHandler received;
    BusSlot slot;
};

// Work for the time without the lock. Holds the call so that what it captured is dropped then too.
struct SystemBus::Deferred {
    Task task;
    std::shared_ptr<Call> call;
};

SystemBus::SystemBus(BusHandle bus, std::string uniqueName) : _bus(std::move(bus)), _uniqueName(std::move(uniqueName))
{
}

SystemBus::~SystemBus() = default;

std::shared_ptr<SystemBus> SystemBus::current()
{
    const std::lock_guard lock(shared().mutex);
    std::shared_ptr<SystemBus>& bus = shared().bus;
    if (!bus || !bus->isUsable())
        bus = open();
    return bus;
}

std::shared_ptr<SystemBus> SystemBus::open()
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0)
        return nullptr;
    BusHandle handle(opened);
    const char* name = nullptr;
    // Waits until the bus has said hello.
    if (sd_bus_get_unique_name(opened, &name) < 0)
        return nullptr;
    auto bus = std::make_shared<SystemBus>(std::move(handle), name);
    return bus->_pumpSignal && bus->_serveSignal ? bus : nullptr;
}

bool SystemBus::isUsable()
{
    const Lock lock(_mutex);
    // Nothing polls while no thread reads: look for a hang-up here.
    if (!_lost && !_pumping) {
        pollfd descriptor = {sd_bus_get_fd(_bus.get()), 0, 0};
        if (::poll(&descriptor, 1, 0) > 0 && (descriptor.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
            lose();
    }
    return !_lost && !_retired;
}

void SystemBus::retire()
{
    std::shared_ptr<SystemBus> self = shared_from_this();
    {
        const std::lock_guard lock(shared().mutex);
        if (shared().bus == self)
            shared().bus.reset();
    }
    const Lock lock(_mutex);
    _retired = true;
    _serveSignal.signal();
    _handedOver.notify_one();
}

bool SystemBus::call(const void* owner, const Compose& compose, Completion completion)
{
    Lock lock(_mutex);
    return needThread() && begin(owner, compose, std::move(completion), NoLimit);
}

std::shared_ptr<SystemBus::Call> SystemBus::beginCall(const void* owner, const Compose& compose, Completion completion,
                                                      std::uint64_t limit)
{
    const Lock lock(_mutex);
    // Before the answer can arrive, so that it does not wake the connection's own thread too.
    if (_serving && !_pumping)
        arm(0);
    std::shared_ptr<Call> call = begin(owner, compose, std::move(completion), limit);
    if (!call && !_pumping)
        handOver();
    return call;
}

std::shared_ptr<SystemBus::Call> SystemBus::begin(const void* owner, const Compose& compose, Completion completion,
                                                  std::uint64_t limit)
{
    sd_bus_message* composed = nullptr;
    int result = _lost ? -ENOTCONN : compose(_bus.get(), &composed);
    const BusMessage message(composed);
    if (result < 0)
        return nullptr;
    auto call = std::make_shared<Call>(*this, owner, std::move(completion));
    sd_bus_slot* slot = nullptr;
    result = sd_bus_call_async(_bus.get(), &slot, composed, &SystemBus::handleReply, call.get(), limit);
    call->slot.reset(slot);
    if (!checkSending(result, limit))
        return nullptr;
    call->place = _calls.insert(_calls.end(), call);
    return call;
}

bool SystemBus::send(const Compose& compose)
{
    const Lock lock(_mutex);
    sd_bus_message* composed = nullptr;
    const int result = needThread() ? compose(_bus.get(), &composed) : -ENOTCONN;
    const BusMessage message(composed);
    return result >= 0 && checkSending(sd_bus_send(_bus.get(), composed, nullptr));
}

// After a message was given to sd-bus: what the socket did not take at once is left to whoever polls.
bool SystemBus::checkSending(int result, std::uint64_t limit)
{
    if (sd_bus_is_open(_bus.get()) <= 0) {
        lose();
        return false;
    }
    const int events = sd_bus_get_events(_bus.get());
    if (_pumping && ((events & ~_polledEvents) != 0 || limit != NoLimit))
        _pumpSignal.signal();
    else if (!_pumping && (events & POLLOUT) != 0)
        handOver();
    return result >= 0;
}

int SystemBus::handleReply(sd_bus_message* reply, void* context, sd_bus_error*)
{
    Call& call = *static_cast<Call*>(context);
    const sd_bus_error* failure = sd_bus_message_get_error(reply);
    const char* sender = sd_bus_message_get_sender(reply);
    const bool isFromPeer = sender && std::strcmp(sender, "org.freedesktop.DBus") != 0;
    call.bus.finish(call, failure ? Answer{nullptr, failure->name, isFromPeer} : Answer{reply, nullptr, isFromPeer});
    return 1;
}

void SystemBus::finish(Call& call, const Answer& answer)
{
    if (call.isDone)
        return;
    call.isDone = true;
    call.slot.reset();
    _deferred.push_back({call.completion(answer), *call.place});
    _calls.erase(call.place);
    call.changed.notify_one();
}

// One thread at a time runs what was deferred, so that it runs in the order in which it arrived.
void SystemBus::dispatch(Lock& lock)
{
    if (_dispatching)
        return;
    _dispatching = true;
    while (!_deferred.empty()) {
        std::vector<Deferred> deferred = std::exchange(_deferred, {});
        lock.unlock();
        for (const Deferred& entry : deferred) {
            if (entry.task)
                entry.task();
        }
        deferred.clear();
        lock.lock();
    }
    _dispatching = false;
}

void SystemBus::abandon(const void* owner)
{
    Lock lock(_mutex);
    for (auto at = _calls.begin(); at != _calls.end();) {
        Call& call = **at++;
        if (call.owner == owner)
            finish(call, {nullptr, SD_BUS_ERROR_DISCONNECTED, false});
    }
    if (_pumping)
        _pumpSignal.signal();
    dispatch(lock);
}

// Nothing can be sent or received any more.
void SystemBus::lose()
{
    if (std::exchange(_lost, true))
        return;
    while (!_calls.empty())
        finish(*_calls.front(), {nullptr, SD_BUS_ERROR_DISCONNECTED, false});
    for (const std::shared_ptr<Watch>& watch : _watches)
        tell(watch, Change::BusLost);
    _pumpSignal.signal();
    _serveSignal.signal();
    _handedOver.notify_one();
}

std::shared_ptr<SystemBus::Watch> SystemBus::watchOwner(const std::string& name, ChangeHandler handler)
{
    const Lock lock(_mutex);
    if (sd_bus_service_name_is_valid(name.c_str()) <= 0 || !needThread())
        return nullptr;
    const std::string rule = "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                             "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='"
        + name + "'";
    auto watch = std::make_shared<Watch>(*this, std::move(handler));
    return addWatch(watch, rule, &SystemBus::handleOwnerChange) ? watch : nullptr;
}

std::shared_ptr<SystemBus::Watch> SystemBus::watchSignal(const Signal& signal, SignalHandler received,
                                                         ChangeHandler handler)
{
    const Lock lock(_mutex);
    if (!needThread())
        return nullptr;
    const std::string rule = std::string("type='signal',path='") + signal.path + "',interface='"
        + signal.interface + "',member='" + signal.member + "'";
    auto watch = std::make_shared<Watch>(*this, std::move(handler));
    watch->received = std::move(received);
    return addWatch(watch, rule, &SystemBus::handleSignal) ? watch : nullptr;
}

bool SystemBus::addWatch(const std::shared_ptr<Watch>& watch, const std::string& rule, sd_bus_message_handler_t handle)
{
    sd_bus_slot* slot = nullptr;
    // A bus that refuses the match leaves it unwatched; without a handler sd-bus would close the connection.
    const auto ignore = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
    const int result = sd_bus_add_match_async(_bus.get(), &slot, rule.c_str(), handle, ignore, watch.get());
    watch->slot.reset(slot);
    if (!checkSending(result))
        return false;
    _watches.push_back(watch);
    return true;
}

void SystemBus::unwatch(const std::shared_ptr<Watch>& watch)
{
    const Lock lock(_mutex);
    watch->slot.reset();
    std::erase(_watches, watch);
    if (!isNeeded())
        _serveSignal.signal();
}

int SystemBus::handleOwnerChange(sd_bus_message* signal, void* context, sd_bus_error*)
{
    Watch& watch = *static_cast<Watch*>(context);
    const char* previous = nullptr;
    if (sd_bus_message_read(signal, "sss", nullptr, &previous, nullptr) >= 0 && *previous)
        watch.bus.tell(watch.shared_from_this(), Change::OwnerLost);
    return 0;
}

int SystemBus::handleSignal(sd_bus_message* signal, void* context, sd_bus_error*)
{
    Watch& watch = *static_cast<Watch*>(context);
    const char* argument = nullptr;
    if (sd_bus_message_read_basic(signal, SD_BUS_TYPE_STRING, &argument) > 0) {
        watch.bus._deferred.push_back(
            {[watch = watch.shared_from_this(), text = std::string(argument)] { watch->received(text); }, nullptr});
    }
    return 0;
}

void SystemBus::tell(const std::shared_ptr<Watch>& watch, Change change)
{
    _deferred.push_back({[watch, change] { watch->handler(change); }, nullptr});
}

void SystemBus::wait(Call& call)
{
    Lock lock(_mutex);
    while (!call.isDone) {
        if (!_pumping) {
            pump(lock, call);
            continue;
        }
        _waiting.push_back(&call);
        call.changed.wait(lock, [&] { return call.isDone || !_pumping; });
        std::erase(_waiting, &call);
    }
    if (!_pumping)
        handOver();
    dispatch(lock);
}

// Reads the socket until the call is answered.
void SystemBus::pump(Lock& lock, const Call& call)
{
    _pumping = true;
    if (_serving)
        arm(0);
    while (!call.isDone) {
        if (step())
            continue;
        if (!_deferred.empty() && !_dispatching)
            dispatch(lock);
        else
            poll(lock);
    }
    _pumping = false;
}

// Handles one message. False when there is nothing to do before the socket or the time brings something.
bool SystemBus::step()
{
    if (_lost)
        return false;
    const int result = sd_bus_is_open(_bus.get()) > 0 ? sd_bus_process(_bus.get(), nullptr) : -ENOTCONN;
    // Once the bus is gone sd-bus would answer the calls itself, in words that mean a lost peer.
    if (result < 0 || sd_bus_is_open(_bus.get()) <= 0)
        lose();
    return result != 0;
}

void SystemBus::poll(Lock& lock)
{
    std::uint64_t moment = 0;
    const bool isLimited = sd_bus_get_timeout(_bus.get(), &moment) > 0 && moment != NoLimit;
    _polledEvents = sd_bus_get_events(_bus.get());
    std::array<pollfd, 2> descriptors = {
        {{sd_bus_get_fd(_bus.get()), static_cast<short>(_polledEvents), 0}, {_pumpSignal.get(), POLLIN, 0}}};
    lock.unlock();
    const timespec left = timeUntil(isLimited ? moment : 0);
    ppoll(descriptors.data(), descriptors.size(), isLimited ? &left : nullptr, nullptr);
    if (descriptors[1].revents != 0)
        _pumpSignal.reset();
    lock.lock();
}

// Whoever read the socket has stopped: the next reader is a thread that waits, or else the connection's own.
void SystemBus::handOver()
{
    if (!_waiting.empty()) {
        _waiting.front()->changed.notify_one();
    } else if (_serving && !_lost) {
        arm(static_cast<std::uint32_t>(sd_bus_get_events(_bus.get())));
        _handedOver.notify_one();
    }
}

bool SystemBus::needThread()
{
    if (_lost || _serving)
        return !_lost;
    _interest.reset(epoll_create1(EPOLL_CLOEXEC));
    epoll_event socket = {.events = 0, .data = {.u32 = SocketEvent}};
    epoll_event signal = {.events = EPOLLIN, .data = {.u32 = SignalEvent}};
    if (epoll_ctl(_interest.get(), EPOLL_CTL_ADD, sd_bus_get_fd(_bus.get()), &socket) < 0
        || epoll_ctl(_interest.get(), EPOLL_CTL_ADD, _serveSignal.get(), &signal) < 0)
        return false;
    _armedEvents = 0;
    try {
        const BlockedSignals blocked;
        std::thread([self = shared_from_this()] { self->serve(); }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    _serving = true;
    return true;
}

bool SystemBus::isNeeded() const
{
    return !_lost && !(_retired && _calls.empty() && _watches.empty());
}

void SystemBus::serve()
{
    ::pthread_setname_np(::pthread_self(), "service bus");
    Lock lock(_mutex);
    while (isNeeded()) {
        if (_pumping || !_waiting.empty()) {
            _handedOver.wait(lock);
            continue;
        }
        const bool didStep = step();
        if (!_deferred.empty() && !_dispatching)
            dispatch(lock);
        else if (!didStep) {
            arm(static_cast<std::uint32_t>(sd_bus_get_events(_bus.get())));
            lock.unlock();
            std::array<epoll_event, 2> events = {};
            const int count = epoll_wait(_interest.get(), events.data(), events.size(), -1);
            lock.lock();
            for (int index = 0; index < count; ++index) {
                if (events[static_cast<std::size_t>(index)].data.u32 == SignalEvent)
                    _serveSignal.reset();
            }
        }
    }
    _serving = false;
    dispatch(lock);
}

void SystemBus::arm(std::uint32_t events)
{
    if (events == _armedEvents)
        return;
    epoll_event socket = {.events = events, .data = {.u32 = SocketEvent}};
    epoll_ctl(_interest.get(), EPOLL_CTL_MOD, sd_bus_get_fd(_bus.get()), &socket);
    _armedEvents = events;
}

} // namespace platform
