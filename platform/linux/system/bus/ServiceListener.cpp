#include "platform/linux/system/bus/ServiceListener.h"

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/bus/ServiceMessage.h"
#include "platform/linux/system/processes/EventDescriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

// How long a listener that stops waits for a peer that does not take the replies already made.
constexpr std::chrono::milliseconds FarewellLimit(1000);

// The connection, which outlives its listener while a reply is still owed.
struct Connection {
    std::mutex mutex;
    BusHandle bus;
    EventDescriptor signal;

    // With the lock. The thread of run() sends what the socket does not take at once.
    bool send(sd_bus_message* message)
    {
        const int result = sd_bus_send(bus.get(), message, nullptr);
        if ((sd_bus_get_events(bus.get()) & POLLOUT) != 0)
            signal.signal();
        return result >= 0;
    }
};

// What a request still waits for. When everyone forgets it, the peer is told so rather than left waiting.
class OwedReply {
public:
    // With the lock, as for every use of the message.
    OwedReply(std::shared_ptr<Connection> connection, BusMessage request)
        : _connection(std::move(connection)),
          _request(std::move(request))
    {
        if (sd_bus_message_get_expect_reply(_request.get()) <= 0)
            _request.reset();
    }

    ~OwedReply()
    {
        const std::lock_guard lock(_connection->mutex);
        if (!_request)
            return;
        sd_bus_message* made = nullptr;
        const sd_bus_error error{SD_BUS_ERROR_FAILED, "The request was not answered.", 0};
        const int result = sd_bus_message_new_method_error(_request.get(), &made, &error);
        const BusMessage message(made);
        if (result >= 0)
            _connection->send(made);
        _request.reset();
    }

    OwedReply(const OwedReply&) = delete;
    OwedReply& operator=(const OwedReply&) = delete;

    void give(const ServiceDictionary& dictionary)
    {
        const std::lock_guard lock(_connection->mutex);
        if (!_request)
            return;
        sd_bus_message* made = nullptr;
        const int result = sd_bus_message_new_method_return(_request.get(), &made);
        const BusMessage message(made);
        if (result >= 0 && appendServiceDictionary(made, dictionary) >= 0 && _connection->send(made))
            _request.reset();
    }

private:
    const std::shared_ptr<Connection> _connection;
    BusMessage _request;
};

class BusServiceListener final : public ServiceListener {
public:
    BusServiceListener(std::shared_ptr<Connection> connection, Handler handler)
        : _connection(std::move(connection)),
          _handler(std::move(handler))
    {
    }

    ~BusServiceListener() override
    {
        const std::lock_guard lock(_connection->mutex);
        _received.clear();
        _nameLost.reset();
        _object.reset();
        // Peers see the end now, even while a reply is still owed.
        sd_bus_close(_connection->bus.get());
    }

    // Null, or what failed.
    const char* serve(const std::string& serviceName, int& result);
    bool run() override;

    void stop() override
    {
        _isStopping.store(true);
        _connection->signal.signal();
    }

private:
    enum class State { Running, Stopped, Lost };

    static int handleRequest(sd_bus_message* message, void* listener, sd_bus_error*);
    static int handleNameLost(sd_bus_message* message, void* listener, sd_bus_error*);

    State processAll();
    void handleReceived();
    void sleep(int milliseconds);
    void finishSending();

    const std::shared_ptr<Connection> _connection;
    const Handler _handler;
    BusSlot _object;
    BusSlot _nameLost;
    std::vector<BusMessage> _received;
    std::string _serviceName;
    bool _isNameLost = false;
    std::atomic<bool> _isStopping = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
};

const char* BusServiceListener::serve(const std::string& serviceName, int& result)
{
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        // Who may send is the bus policy's business; who may change anything is the authorization's.
        SD_BUS_METHOD_WITH_ARGS("Send", SD_BUS_ARGS("a{sv}", request), SD_BUS_RESULT("a{sv}", reply),
                                &BusServiceListener::handleRequest, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    _serviceName = serviceName;
    sd_bus* bus = _connection->bus.get();
    sd_bus_slot* slot = nullptr;
    result = sd_bus_add_object_vtable(bus, &slot, servicePath(serviceName).c_str(), serviceName.c_str(), methods, this);
    _object.reset(slot);
    if (result < 0)
        return "the object cannot be offered";
    slot = nullptr;
    result = sd_bus_match_signal(bus, &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                 "NameLost", &BusServiceListener::handleNameLost, this);
    _nameLost.reset(slot);
    if (result < 0)
        return "the name cannot be watched";
    result = sd_bus_request_name(bus, serviceName.c_str(), 0);
    return result < 0 ? "the name cannot be owned" : nullptr;
}

int BusServiceListener::handleRequest(sd_bus_message* message, void* context, sd_bus_error*)
{
    static_cast<BusServiceListener*>(context)->_received.emplace_back(sd_bus_message_ref(message));
    return 1;
}

int BusServiceListener::handleNameLost(sd_bus_message* message, void* context, sd_bus_error*)
{
    auto& listener = *static_cast<BusServiceListener*>(context);
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &name) >= 0 && listener._serviceName == name)
        listener._isNameLost = true;
    return 0;
}

bool BusServiceListener::run()
{
    for (;;) {
        const State state = processAll();
        handleReceived();
        if (state != State::Running) {
            finishSending();
            return state == State::Stopped;
        }
        if (!_isStopping.load())
            sleep(-1);
    }
}

// Takes in requests until there are none, or enough for now.
BusServiceListener::State BusServiceListener::processAll()
{
    constexpr std::size_t Enough = 64;
    const std::lock_guard lock(_connection->mutex);
    while (_received.size() < Enough && !_isStopping.load()) {
        const int result = sd_bus_process(_connection->bus.get(), nullptr);
        if (result < 0 || sd_bus_is_open(_connection->bus.get()) <= 0 || _isNameLost)
            return State::Lost;
        if (result == 0)
            break;
    }
    return _isStopping.load() ? State::Stopped : State::Running;
}

void BusServiceListener::handleReceived()
{
    std::vector<BusMessage> received;
    {
        const std::lock_guard lock(_connection->mutex);
        received.swap(_received);
    }
    for (BusMessage& message : received) {
        Request request;
        std::shared_ptr<OwedReply> owed;
        {
            const std::lock_guard lock(_connection->mutex);
            std::optional<ServiceDictionary> dictionary = readServiceDictionary(message.get());
            const char* sender = sd_bus_message_get_sender(message.get());
            if (dictionary && sender)
                request = {std::move(*dictionary), sender};
            owed = std::make_shared<OwedReply>(_connection, std::move(message));
        }
        if (!request.sender.empty())
            _handler(std::move(request), [owed](const ServiceDictionary& reply) { owed->give(reply); });
    }
}

void BusServiceListener::sleep(int milliseconds)
{
    std::array<pollfd, 2> descriptors = {};
    {
        const std::lock_guard lock(_connection->mutex);
        sd_bus* bus = _connection->bus.get();
        std::uint64_t moment = 0;
        if (sd_bus_get_timeout(bus, &moment) > 0 && moment == 0)
            return;
        const int events = sd_bus_get_events(bus);
        descriptors = {{{sd_bus_get_fd(bus), static_cast<short>(events > 0 ? events : 0), 0},
                        {_connection->signal.get(), POLLIN, 0}}};
    }
    if (poll(descriptors.data(), descriptors.size(), milliseconds) > 0 && descriptors[1].revents != 0)
        _connection->signal.reset();
}

void BusServiceListener::finishSending()
{
    const auto end = std::chrono::steady_clock::now() + FarewellLimit;
    for (auto now = end - FarewellLimit; now < end; now = std::chrono::steady_clock::now()) {
        {
            const std::lock_guard lock(_connection->mutex);
            sd_bus* bus = _connection->bus.get();
            if (sd_bus_is_open(bus) <= 0 || (sd_bus_get_events(bus) & POLLOUT) == 0)
                return;
            sd_bus_process(bus, nullptr);
            _received.clear();
        }
        sleep(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count()));
    }
}

} // namespace

std::expected<std::unique_ptr<ServiceListener>, std::string> ServiceListener::create(const std::string& serviceName,
                                                                                     Handler handler)
{
    auto connection = std::make_shared<Connection>();
    sd_bus* bus = nullptr;
    int result = connection->signal ? sd_bus_open_system(&bus) : -errno;
    connection->bus.reset(bus);
    const char* failure = "there is no system bus";
    auto listener = std::make_unique<BusServiceListener>(connection, std::move(handler));
    if (result >= 0)
        failure = listener->serve(serviceName, result);
    if (failure)
        return std::unexpected("Cannot serve " + serviceName + ": " + failure + " (" + std::strerror(-result) + ").");
    return listener;
}

} // namespace platform
