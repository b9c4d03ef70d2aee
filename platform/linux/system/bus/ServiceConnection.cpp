#include "platform/ServiceConnection.h"

#include "platform/linux/system/bus/ServiceMessage.h"
#include "platform/linux/system/bus/SystemBus.h"

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {

namespace {

// Only the loss of a peer that had the request is an interruption. The daemon says so by this name; its errno is that
// of an activation that took too long, which makes the endpoint unusable. What a peer that lives answers, and what the
// daemon says of one message too many, concerns that message alone.
ServiceError errorOf(const SystemBus::Answer& answer)
{
    if (answer.isFromPeer || std::strcmp(answer.error, SD_BUS_ERROR_LIMITS_EXCEEDED) == 0)
        return ServiceError::Refused;
    return std::strcmp(answer.error, SD_BUS_ERROR_NO_REPLY) == 0 ? ServiceError::Interrupted : ServiceError::Invalid;
}

ServiceReply readAnswer(const SystemBus::Answer& answer)
{
    if (!answer.reply)
        return std::unexpected(errorOf(answer));
    std::optional<ServiceDictionary> dictionary = readServiceDictionary(answer.reply);
    if (!dictionary)
        return std::unexpected(ServiceError::Refused);
    return std::move(*dictionary);
}

bool isTooLarge(const ServiceDictionary& message)
{
    return serviceDictionarySize(message) > MaximumServiceMessageSize;
}

class BusServiceConnection final : public ServiceConnection, public std::enable_shared_from_this<BusServiceConnection> {
public:
    BusServiceConnection(const std::string& serviceName, std::shared_ptr<Queue> target)
        : _name(serviceName),
          _path(servicePath(serviceName)),
          _target(std::move(target))
    {
    }

    ~BusServiceConnection() override
    {
        if (_watch)
            _bus->unwatch(_watch);
    }

    void setEventHandler(EventHandler handler) override
    {
        const std::lock_guard lock(_mutex);
        _handler = std::move(handler);
    }

    void resume() override;
    void send(const ServiceDictionary& message) override;
    void send(const ServiceDictionary& message, std::shared_ptr<Queue> replyQueue, ReplyHandler handler) override;
    ServiceReply sendSynchronously(const ServiceDictionary& message) override;
    void cancel() override { invalidate(nullptr); }
    bool isInvalid() const override { return _isInvalid; }

private:
    struct Request {
        std::shared_ptr<Queue> queue;
        ReplyHandler handler;
    };

    SystemBus* bindBus();
    int compose(sd_bus* bus, sd_bus_message** message, const ServiceDictionary& dictionary, bool expectsReply) const;
    bool begin(const ServiceDictionary& message, const std::shared_ptr<Request>& request);
    void deliver(const std::shared_ptr<Request>& request, ServiceReply reply, const std::shared_ptr<SystemBus>& bus);
    void notice(SystemBus::Change change, const std::shared_ptr<SystemBus>& bus);
    void tell(ServiceError event);
    void invalidate(const std::shared_ptr<SystemBus>& condemned);

    const std::string _name;
    const std::string _path;
    const std::shared_ptr<Queue> _target;

    // Taken before the lock of the bus, never after it.
    std::mutex _mutex;
    EventHandler _handler;
    bool _isResumed = false;
    std::atomic<bool> _isInvalid = false; // changed with the lock
    std::condition_variable _resumed;
    std::vector<std::function<void()>> _held; // sends that wait for resume()
    std::shared_ptr<SystemBus> _bus;
    std::shared_ptr<SystemBus::Watch> _watch;
    std::vector<std::weak_ptr<SystemBus>> _formerBuses; // may still have calls of ours
};

void BusServiceConnection::resume()
{
    std::vector<std::function<void()>> held;
    {
        const std::lock_guard lock(_mutex);
        _isResumed = true;
        held.swap(_held);
    }
    _resumed.notify_all();
    for (const std::function<void()>& send : held)
        send();
}

// The bus that the next message takes, with the peer watched on it. The authorization that travels in the message names
// the shared connection, so the message follows when that changes.
SystemBus* BusServiceConnection::bindBus()
{
    std::shared_ptr<SystemBus> bus = _isInvalid ? nullptr : SystemBus::current();
    if (bus == _bus || !bus)
        return bus.get();
    if (_bus) {
        _bus->unwatch(_watch);
        _formerBuses.push_back(_bus);
        _watch.reset();
        _bus.reset();
    }
    _watch = bus->watchOwner(_name, [self = weak_from_this(), held = std::weak_ptr(bus)](SystemBus::Change change) {
        if (const auto connection = self.lock())
            connection->notice(change, held.lock());
    });
    if (!_watch)
        return nullptr;
    _bus = std::move(bus);
    return _bus.get();
}

int BusServiceConnection::compose(sd_bus* bus, sd_bus_message** message, const ServiceDictionary& dictionary,
                                  bool expectsReply) const
{
    int result =
        sd_bus_message_new_method_call(bus, message, _name.c_str(), _path.c_str(), _name.c_str(), ServiceMethod);
    if (result >= 0)
        result = sd_bus_message_set_expect_reply(*message, expectsReply);
    return result < 0 ? result : appendServiceDictionary(*message, dictionary);
}

void BusServiceConnection::send(const ServiceDictionary& message)
{
    if (isTooLarge(message))
        return;
    {
        const std::lock_guard lock(_mutex);
        if (!_isResumed && !_isInvalid) {
            _held.push_back([this, message] { send(message); });
            return;
        }
        SystemBus* bus = bindBus();
        if (bus && bus->send([&](sd_bus* on, sd_bus_message** made) { return compose(on, made, message, false); }))
            return;
    }
    invalidate(nullptr);
}

void BusServiceConnection::send(const ServiceDictionary& message, std::shared_ptr<Queue> replyQueue,
                                ReplyHandler handler)
{
    const auto request = std::make_shared<Request>(Request{std::move(replyQueue), std::move(handler)});
    if (isTooLarge(message)) {
        deliver(request, std::unexpected(ServiceError::TooLarge), nullptr);
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        if (!_isResumed && !_isInvalid) {
            _held.push_back([this, message, request] { send(message, request->queue, request->handler); });
            return;
        }
        if (begin(message, request))
            return;
    }
    deliver(request, std::unexpected(ServiceError::Invalid), nullptr);
}

bool BusServiceConnection::begin(const ServiceDictionary& message, const std::shared_ptr<Request>& request)
{
    SystemBus* bus = bindBus();
    if (!bus)
        return false;
    return bus->call(
        this, [&](sd_bus* on, sd_bus_message** made) { return compose(on, made, message, true); },
        [self = shared_from_this(), request, held = _bus](const SystemBus::Answer& answer) -> SystemBus::Task {
            const auto reply = std::make_shared<ServiceReply>(readAnswer(answer));
            return [self, request, held, reply] { self->deliver(request, std::move(*reply), held); };
        });
}

void BusServiceConnection::deliver(const std::shared_ptr<Request>& request, ServiceReply reply,
                                   const std::shared_ptr<SystemBus>& bus)
{
    if (!reply && reply.error() == ServiceError::Invalid)
        invalidate(bus);
    const auto shared = std::make_shared<ServiceReply>(std::move(reply));
    request->queue->async([request, shared] { request->handler(std::move(*shared)); });
}

ServiceReply BusServiceConnection::sendSynchronously(const ServiceDictionary& message)
{
    if (isTooLarge(message))
        return std::unexpected(ServiceError::TooLarge);
    ServiceReply reply = std::unexpected(ServiceError::Invalid);
    std::shared_ptr<SystemBus> bus;
    std::shared_ptr<SystemBus::Call> call;
    {
        std::unique_lock lock(_mutex);
        _resumed.wait(lock, [this] { return _isResumed || _isInvalid; });
        if (bindBus()) {
            bus = _bus;
            call = bus->beginCall(
                this, [&](sd_bus* on, sd_bus_message** made) { return compose(on, made, message, true); },
                [&reply](const SystemBus::Answer& answer) -> SystemBus::Task {
                    reply = readAnswer(answer);
                    return nullptr;
                });
        }
    }
    if (call)
        bus->wait(*call);
    if (!reply && reply.error() == ServiceError::Invalid)
        invalidate(bus);
    return reply;
}

void BusServiceConnection::notice(SystemBus::Change change, const std::shared_ptr<SystemBus>& bus)
{
    {
        const std::lock_guard lock(_mutex);
        if (!bus || bus != _bus || _isInvalid)
            return;
        if (change == SystemBus::Change::OwnerLost) {
            tell(ServiceError::Interrupted);
            return;
        }
    }
    invalidate(bus);
}

void BusServiceConnection::tell(ServiceError event)
{
    if (_handler)
        _target->async([handler = _handler, event] { handler(event); });
}

// The end of this connection. The bus that failed it is not used again by anyone; a cancelled connection has nothing
// against its bus.
void BusServiceConnection::invalidate(const std::shared_ptr<SystemBus>& condemned)
{
    std::shared_ptr<SystemBus> bus;
    std::shared_ptr<SystemBus::Watch> watch;
    std::vector<std::weak_ptr<SystemBus>> formerBuses;
    std::vector<std::function<void()>> held;
    {
        const std::lock_guard lock(_mutex);
        if (_isInvalid.exchange(true))
            return;
        tell(ServiceError::Invalid);
        _handler = nullptr;
        bus.swap(_bus);
        watch.swap(_watch);
        formerBuses.swap(_formerBuses);
        held.swap(_held);
    }
    _resumed.notify_all();
    for (const std::function<void()>& send : held)
        send(); // is answered with Invalid
    if (condemned)
        condemned->retire();
    if (bus) {
        bus->unwatch(watch);
        bus->abandon(this);
    }
    for (const std::weak_ptr<SystemBus>& former : formerBuses) {
        if (const std::shared_ptr<SystemBus> alive = former.lock())
            alive->abandon(this);
    }
}

} // namespace

std::shared_ptr<ServiceConnection> ServiceConnection::create(const std::string& serviceName,
                                                             std::shared_ptr<Queue> target, unsigned)
{
    return std::make_shared<BusServiceConnection>(serviceName, std::move(target));
}

} // namespace platform
