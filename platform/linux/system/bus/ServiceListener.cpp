#include "platform/ServiceListener.h"

#include "platform/linux/system/authorization/AuthorityQuestion.h"
#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/bus/ReplyQueue.h"
#include "platform/linux/system/bus/ServiceMessage.h"
#include "platform/linux/system/queues/EventDescriptor.h"
#include "platform/linux/system/queues/EventHandles.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/epoll.h>
#include <systemd/sd-daemon.h>
#include <thread>
#include <utility>

namespace platform {

namespace {

// How long a listener that stops waits for a peer that does not take the replies already made.
constexpr std::chrono::milliseconds FarewellLimit(1000);
// While so many messages wait for the socket, no more are taken in.
constexpr std::uint64_t MaximumUnsent = 64;
// What sd-bus answers by itself, such as an introspection, weighs about so much.
constexpr std::size_t SmallReplySize = 4096;
constexpr std::size_t RefusalSize = BusPeers::RefusalSize;
constexpr const char* NotAnswered = "The request was not answered.";

// Tasks for the thread of run(). Outlives its listener while a reply is still owed.
class Inbox {
public:
    using Task = std::function<void()>;

    // The calling thread is the one that takes tasks, and needs no signal.
    void own()
    {
        const std::lock_guard lock(_mutex);
        _owner = std::this_thread::get_id();
    }
    void add(Task task)
    {
        const std::lock_guard lock(_mutex);
        if (!_isOpen)
            return;
        _tasks.push_back(std::move(task));
        if (_owner == std::this_thread::get_id() || std::exchange(_isSignalled, true))
            return;
        signal.signal();
    }
    std::vector<Task> take()
    {
        const std::lock_guard lock(_mutex);
        if (std::exchange(_isSignalled, false))
            signal.reset();
        return std::exchange(_tasks, {});
    }
    void close()
    {
        std::vector<Task> dropped; // after the lock: what a task holds may add another
        const std::lock_guard lock(_mutex);
        _isOpen = false;
        dropped.swap(_tasks);
    }

    EventDescriptor signal;

private:
    std::mutex _mutex;
    std::thread::id _owner;
    bool _isOpen = true;
    bool _isSignalled = false;
    std::vector<Task> _tasks;
};

class BusServiceListener;

// What a request still waits for. When everyone forgets it, the peer is told so rather than left waiting.
class OwedReply {
public:
    OwedReply(BusServiceListener& listener, std::shared_ptr<Inbox> inbox, std::uint64_t number)
        : _listener(listener),
          _inbox(std::move(inbox)),
          _number(number)
    {
    }
    ~OwedReply() { answer(std::nullopt); }
    OwedReply(const OwedReply&) = delete;
    OwedReply& operator=(const OwedReply&) = delete;

    void give(ServiceDictionary dictionary) { answer(std::move(dictionary)); }

private:
    void answer(std::optional<ServiceDictionary> dictionary);

    BusServiceListener& _listener; // only used by the inbox's tasks, which end before it
    const std::shared_ptr<Inbox> _inbox;
    const std::uint64_t _number;
    std::atomic<bool> _isGiven = false;
};

class BusServiceListener final : public ServiceListener {
public:
    BusServiceListener(Handlers handlers, std::vector<ServiceKey> form)
        : _handlers(std::move(handlers)),
          _form(std::move(form))
    {
    }

    ~BusServiceListener() override
    {
        _inbox->close();
        _owed.clear();
        _questions.clear();
        _replies.reset();
        _peers.reset();
        _object.reset();
        _filter.reset();
        _nameLost.reset();
        // Peers see the end now, even while a reply is still owed.
        if (_bus)
            sd_bus_close(_bus.get());
    }

    // Null, or what failed.
    const char* open(int& result);
    const char* serve(const std::string& serviceName, int& result);

    void stopOnTermination() override;
    bool wasTerminated() const override { return _isTerminated; }
    bool run() override;
    void flush() override;
    void stop() override
    {
        _isStopping.store(true);
        _inbox->signal.signal();
    }
    void async(std::function<void()> task) override { _inbox->add(std::move(task)); }
    void copyRight(const RightQuestion& question, std::function<void(Authorization::Status)> answer) override;

    void answer(std::uint64_t number, const std::optional<ServiceDictionary>& dictionary);

private:
    // A request that is not answered yet: itself while its handler runs, then what can be sent for it, so that its
    // bytes do not stay.
    struct Owed {
        std::string sender;
        BusMessage request;
        BusMessage reply;
        BusMessage error;
        std::uint64_t call = 0; // the number that its sender gave to it
    };
    struct Question {
        BusServiceListener* owner;
        std::function<void(Authorization::Status)> answer;
        BusSlot slot;
        std::list<Question>::iterator place;
    };

    static int handleAny(sd_bus_message* message, void* listener, sd_bus_error*);
    static int handleRequest(sd_bus_message* message, void* listener, sd_bus_error*);
    static int handleNameLost(sd_bus_message* message, void* listener, sd_bus_error*);
    static int handleVerdict(sd_bus_message* reply, void* question, sd_bus_error*);
    static int handleEvent(sd_event_source*, int, std::uint32_t events, void* listener);
    static int handleSignal(sd_event_source*, const signalfd_siginfo*, void* listener);

    int receive(sd_bus_message* message);
    void refuse(sd_bus_message* call, const std::string& sender);
    void sendRefusal(const std::string& peer, std::uint64_t call);
    void detach(std::uint64_t number);
    void makeReplies(Owed& owed) const;
    BusMessage errorReply(sd_bus_message* request, const char* name, const char* text) const;
    bool isLost() const { return sd_bus_is_open(_bus.get()) <= 0 || _isNameLost; }
    bool isCongested() const;
    bool processBus();
    void runTasks();
    void wait(std::uint64_t microseconds);
    void waitUntilRead(std::chrono::steady_clock::duration limit);

    const Handlers _handlers;
    const std::vector<ServiceKey> _form;
    const std::shared_ptr<Inbox> _inbox = std::make_shared<Inbox>();
    EventHandle _event;
    BusHandle _bus;
    EventSource _socket;
    EventSource _wake;
    EventSource _termination;
    EventSource _interrupt;
    std::unique_ptr<BusPeers> _peers;
    std::unique_ptr<ReplyQueue> _replies;
    BusSlot _object;
    BusSlot _filter;
    BusSlot _nameLost;
    std::map<std::uint64_t, Owed> _owed;
    std::list<Question> _questions;
    std::uint64_t _requestCount = 0;
    std::string _serviceName;
    bool _isNameLost = false;
    bool _isTerminated = false;
    bool _isWritable = false; // the socket, or cut, when it was last waited for
    std::atomic<bool> _isStopping = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
};

void OwedReply::answer(std::optional<ServiceDictionary> dictionary)
{
    if (_isGiven.exchange(true))
        return;
    auto task = [&listener = _listener, number = _number,
                 shared = std::make_shared<std::optional<ServiceDictionary>>(std::move(dictionary))] {
        listener.answer(number, *shared);
    };
    _inbox->add(std::move(task));
}

const char* BusServiceListener::open(int& result)
{
    sd_event* event = nullptr;
    result = _inbox->signal ? sd_event_new(&event) : -errno;
    _event.reset(event);
    if (result < 0)
        return "there are no events";
    sd_bus* bus = nullptr;
    result = sd_bus_open_system(&bus);
    _bus.reset(bus);
    if (result < 0)
        return "there is no system bus";
    sd_event_source* source = nullptr;
    result = sd_event_add_io(event, &source, sd_bus_get_fd(bus), EPOLLIN, &BusServiceListener::handleEvent, this);
    _socket.reset(source);
    if (result >= 0)
        result =
            sd_event_add_io(event, &source, _inbox->signal.get(), EPOLLIN, &BusServiceListener::handleEvent, nullptr);
    if (result < 0)
        return "the system bus cannot be waited for";
    _wake.reset(source);
    return nullptr;
}

const char* BusServiceListener::serve(const std::string& serviceName, int& result)
{
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        // Who may send is the bus policy's business; who may change anything is the authorization's.
        SD_BUS_METHOD_WITH_ARGS("Send", SD_BUS_ARGS("a{sv}", request), SD_BUS_RESULT("a{sv}", reply),
                                &BusServiceListener::handleRequest, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    if (const char* failure = open(result))
        return failure;
    _serviceName = serviceName;
    sd_bus* bus = _bus.get();
    const auto identified = [this](const ServicePeer& peer) {
        _replies->identify(peer);
        if (_handlers.identified)
            _handlers.identified(peer);
    };
    _peers =
        std::make_unique<BusPeers>(bus, identified, _handlers.left,
                                   [this](const std::string& peer, std::uint64_t call) { sendRefusal(peer, call); });
    _replies = std::make_unique<ReplyQueue>(bus, *_peers);
    sd_bus_slot* slot = nullptr;
    result = sd_bus_add_object_vtable(bus, &slot, servicePath(serviceName).c_str(), serviceName.c_str(), methods, this);
    _object.reset(slot);
    if (result < 0)
        return "the object cannot be offered";
    slot = nullptr;
    result = sd_bus_add_filter(bus, &slot, &BusServiceListener::handleAny, this);
    _filter.reset(slot);
    if (result >= 0)
        result = _peers->watch();
    slot = nullptr;
    if (result >= 0)
        result = sd_bus_match_signal(bus, &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus", "NameLost", &BusServiceListener::handleNameLost, this);
    _nameLost.reset(slot);
    if (result < 0)
        return "the name cannot be watched";
    result = sd_bus_request_name(bus, serviceName.c_str(), 0);
    return result < 0 ? "the name cannot be owned" : nullptr;
}

void BusServiceListener::stopOnTermination()
{
    for (const auto& [number, place] : {std::pair(SIGTERM, &_termination), std::pair(SIGINT, &_interrupt)}) {
        sd_event_source* source = nullptr;
        if (sd_event_add_signal(_event.get(), &source, number, &BusServiceListener::handleSignal, this) < 0)
            continue;
        place->reset(source);
        // A signal that was read together with another event must be told first: after that one the loop may end.
        sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IMPORTANT);
    }
}

int BusServiceListener::handleSignal(sd_event_source*, const signalfd_siginfo*, void* context)
{
    auto& listener = *static_cast<BusServiceListener*>(context);
    listener._isTerminated = true;
    listener._isStopping.store(true);
    return 0;
}

int BusServiceListener::handleEvent(sd_event_source*, int, std::uint32_t events, void* listener)
{
    if (listener)
        static_cast<BusServiceListener*>(listener)->_isWritable = (events & ~std::uint32_t(EPOLLIN)) != 0;
    return 0;
}

// Sees every message before anybody else. A call that is not served costs its sender what the refusal weighs.
int BusServiceListener::handleAny(sd_bus_message* message, void* context, sd_bus_error*)
{
    auto& listener = *static_cast<BusServiceListener*>(context);
    const char* sender = sd_bus_message_get_sender(message);
    if (!sender || sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0)
        return 0;
    listener._peers->note(sender);
    const bool isRequest = sd_bus_message_is_method_call(message, listener._serviceName.c_str(), ServiceMethod) > 0;
    const bool isTaken =
        isRequest ? !listener._peers->isCutOff(sender) : listener._peers->charge(sender, SmallReplySize);
    if (!isTaken)
        listener.refuse(message, sender);
    else if (!isRequest)
        listener._peers->sent(sender, SmallReplySize); // sd-bus answers it now
    return isTaken ? 0 : 1;
}

// Tells the sender that its user is cut off.
void BusServiceListener::refuse(sd_bus_message* call, const std::string& sender)
{
    std::uint64_t number = 0;
    if (sd_bus_message_get_expect_reply(call) > 0 && sd_bus_message_get_cookie(call, &number) >= 0)
        _peers->refuse(sender, number);
}

// An error is made from the call that it answers, of which only the number and the sender are left.
void BusServiceListener::sendRefusal(const std::string& peer, std::uint64_t call)
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(_bus.get(), &made, _serviceName.c_str(), "/", nullptr, ServiceMethod) < 0)
        return;
    const BusMessage likeness(made);
    if (sd_bus_message_set_sender(made, peer.c_str()) >= 0 && sd_bus_message_seal(made, call, 0) >= 0)
        _replies->add(peer, RefusalSize,
                      errorReply(made, SD_BUS_ERROR_LIMITS_EXCEEDED,
                                 "Programs of this user have not read what was sent to them."));
}

int BusServiceListener::handleRequest(sd_bus_message* message, void* context, sd_bus_error*)
{
    return static_cast<BusServiceListener*>(context)->receive(message);
}

int BusServiceListener::receive(sd_bus_message* message)
{
    const char* sender = sd_bus_message_get_sender(message);
    std::optional<ServiceReading> reading = readServiceMessage(message, _form);
    if (!sender)
        return 1;
    if (!reading) {
        if (sd_bus_message_get_expect_reply(message) <= 0)
            return 1;
        if (_peers->charge(sender, RefusalSize))
            _replies->add(sender, RefusalSize,
                          errorReply(message, SD_BUS_ERROR_INVALID_ARGS, "The request cannot be read."));
        else
            refuse(message, sender);
        return 1;
    }
    ServiceListener::Request request = {std::move(reading->dictionary), std::move(reading->tooLong), sender};
    if (sd_bus_message_get_expect_reply(message) <= 0) {
        _handlers.received(std::move(request), nullptr);
        return 1;
    }
    const std::uint64_t number = ++_requestCount;
    _owed.emplace(number, Owed{sender, BusMessage(sd_bus_message_ref(message)), nullptr, nullptr, 0});
    auto owed = std::make_shared<OwedReply>(*this, _inbox, number);
    _handlers.received(std::move(request), [owed](ServiceDictionary reply) { owed->give(std::move(reply)); });
    owed.reset();
    runTasks(); // a reply that was given at once
    detach(number);
    return 1;
}

// Lets go of the request itself.
void BusServiceListener::detach(std::uint64_t number)
{
    const auto found = _owed.find(number);
    if (found == _owed.end())
        return;
    makeReplies(found->second);
    found->second.request.reset();
}

void BusServiceListener::makeReplies(Owed& owed) const
{
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_return(owed.request.get(), &made);
    owed.reply.reset(made);
    owed.error = errorReply(owed.request.get(), SD_BUS_ERROR_FAILED, NotAnswered);
    sd_bus_message_get_cookie(owed.request.get(), &owed.call);
}

BusMessage BusServiceListener::errorReply(sd_bus_message* request, const char* name, const char* text) const
{
    sd_bus_message* made = nullptr;
    const sd_bus_error error{name, text, 0};
    sd_bus_message_new_method_error(request, &made, &error);
    return BusMessage(made);
}

// Without a dictionary, or with one that the bus would not carry, the sender gets an error.
void BusServiceListener::answer(std::uint64_t number, const std::optional<ServiceDictionary>& dictionary)
{
    const auto node = _owed.extract(number);
    if (node.empty() || isLost())
        return;
    Owed& owed = node.mapped();
    if (owed.request)
        makeReplies(owed);
    const std::size_t size = dictionary ? serviceDictionarySize(*dictionary) : SmallReplySize;
    if (dictionary && size <= MaximumServiceMessageSize && _peers->charge(owed.sender, size)) {
        const bool isWhole = appendServiceDictionary(owed.reply.get(), *dictionary) >= 0;
        _replies->add(owed.sender, size, std::move(isWhole ? owed.reply : owed.error));
    } else if (_peers->charge(owed.sender, RefusalSize)) {
        _replies->add(owed.sender, RefusalSize, std::move(owed.error));
    } else {
        _peers->refuse(owed.sender, owed.call);
    }
}

int BusServiceListener::handleNameLost(sd_bus_message* message, void* context, sd_bus_error*)
{
    auto& listener = *static_cast<BusServiceListener*>(context);
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &name) >= 0 && listener._serviceName == name)
        listener._isNameLost = true;
    return 0;
}

// The form names the peer, of whom the authority is asked.
void BusServiceListener::copyRight(const RightQuestion& asked, std::function<void(Authorization::Status)> answer)
{
    _questions.push_back({this, std::move(answer), nullptr, {}});
    Question& question = _questions.back();
    question.place = std::prev(_questions.end());
    sd_bus_message* made = nullptr;
    int result = AuthorityQuestion::compose(_bus.get(), &made, asked.peer, asked.right, false);
    const BusMessage message(made);
    sd_bus_slot* slot = nullptr;
    if (result >= 0)
        result = sd_bus_call_async(_bus.get(), &slot, made, &BusServiceListener::handleVerdict, &question,
                                   AuthorityQuestion::SilentLimit);
    question.slot.reset(slot);
    if (result >= 0)
        return;
    answer = std::move(question.answer);
    _questions.erase(question.place);
    answer(Authorization::Internal);
}

int BusServiceListener::handleVerdict(sd_bus_message* reply, void* context, sd_bus_error*)
{
    auto& question = *static_cast<Question*>(context);
    BusServiceListener& listener = *question.owner;
    const auto answer = std::move(question.answer);
    listener._questions.erase(question.place);
    const sd_bus_error* failure = sd_bus_message_get_error(reply);
    // Once the bus is gone sd-bus answers by itself.
    if (!listener.isLost())
        answer(AuthorityQuestion::read(failure ? nullptr : reply, failure ? failure->name : nullptr, false).status);
    return 1;
}

bool BusServiceListener::isCongested() const
{
    std::uint64_t unsent = 0;
    return sd_bus_get_n_queued_write(_bus.get(), &unsent) >= 0 && unsent > MaximumUnsent;
}

// Handles what has arrived, or enough of it for now. False when there is more.
bool BusServiceListener::processBus()
{
    constexpr int Enough = 64;
    for (int count = 0; count < Enough; ++count) {
        if (isLost() || _isStopping.load() || (isCongested() && !_isWritable))
            return true;
        const int result = sd_bus_process(_bus.get(), nullptr);
        _isWritable = false;
        if (result < 0)
            sd_bus_close(_bus.get());
        if (result <= 0)
            return true;
    }
    return false;
}

void BusServiceListener::runTasks()
{
    for (auto tasks = _inbox->take(); !tasks.empty(); tasks = _inbox->take()) {
        for (const Inbox::Task& task : tasks)
            task();
    }
}

void BusServiceListener::wait(std::uint64_t microseconds)
{
    int events = sd_bus_get_events(_bus.get());
    if (isCongested())
        events &= ~POLLIN;
    std::uint32_t wanted = 0;
    if (events > 0 && (events & POLLIN) != 0)
        wanted |= EPOLLIN;
    if ((events > 0 && (events & POLLOUT) != 0) || !_replies->isEmpty())
        wanted |= EPOLLOUT;
    sd_event_source_set_io_events(_socket.get(), wanted);
    std::uint64_t moment = 0;
    if (sd_bus_get_timeout(_bus.get(), &moment) > 0 && moment != UINT64_MAX) {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const std::uint64_t present =
            static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
        microseconds = std::min(microseconds, moment > present ? moment - present : 0);
    }
    _isWritable = false;
    sd_event_run(_event.get(), microseconds);
}

bool BusServiceListener::run()
{
    _inbox->own();
    // For a service manager, if one waits for it; the word is given again by a new version in the same process.
    sd_event_set_watchdog(_event.get(), 1);
    sd_notify(0, "READY=1");
    for (;;) {
        const bool isIdle = processBus();
        runTasks();
        _replies->send();
        if (isLost() || _isStopping.load())
            break;
        wait(isIdle ? UINT64_MAX : 0);
    }
    const bool isStopped = !isLost();
    flush();
    return isStopped;
}

void BusServiceListener::flush()
{
    const auto end = std::chrono::steady_clock::now() + FarewellLimit;
    _inbox->own();
    runTasks();
    for (auto now = end - FarewellLimit; now < end; now = std::chrono::steady_clock::now()) {
        std::uint64_t unsent = 0;
        _replies->send();
        if (isLost() || sd_bus_get_n_queued_write(_bus.get(), &unsent) < 0)
            return;
        if (unsent == 0 && _replies->isEmpty())
            return waitUntilRead(end - now);
        pollfd descriptor = {sd_bus_get_fd(_bus.get()), POLLOUT, 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now).count();
        // Being writable, it writes and takes nothing in.
        if (poll(&descriptor, 1, static_cast<int>(left)) > 0)
            sd_bus_process(_bus.get(), nullptr);
    }
}

// The bus drops what it has not read yet of a connection that is closed with something unread on this side. It reads in
// order, so its answer says that it has read everything.
void BusServiceListener::waitUntilRead(std::chrono::steady_clock::duration limit)
{
    sd_bus_message* made = nullptr;
    const int result = sd_bus_message_new_method_call(_bus.get(), &made, "org.freedesktop.DBus",
                                                      "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
    const BusMessage question(made);
    const auto left = std::chrono::ceil<std::chrono::microseconds>(limit).count();
    if (result >= 0)
        sd_bus_call(_bus.get(), made, static_cast<std::uint64_t>(left), nullptr, nullptr);
}

} // namespace

std::expected<std::unique_ptr<ServiceListener>, std::string>
ServiceListener::create(const std::string& serviceName, Handlers handlers, std::vector<ServiceKey> form)
{
    int result = 0;
    auto listener = std::make_unique<BusServiceListener>(std::move(handlers), std::move(form));
    if (const char* failure = listener->serve(serviceName, result))
        return std::unexpected("Cannot serve " + serviceName + ": " + failure + " (" + std::strerror(-result) + ").");
    return listener;
}

} // namespace platform
