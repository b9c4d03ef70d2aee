#pragma once

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/queues/EventDescriptor.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

// One connection to the system bus for all threads of the process.
//
// A thread that waits for a reply reads the socket itself, so that no other thread has to run before it continues.
// One thread reads at a time; the others sleep until their reply is there or the reading is handed to them. A thread of
// the connection's own reads only while nobody waits. It starts with the first asynchronous call or watch, sleeps
// without a time limit, and ends when the connection is lost, or retired and no longer needed.
class SystemBus : public std::enable_shared_from_this<SystemBus> {
public:
    static constexpr std::uint64_t NoLimit = UINT64_MAX;

    using Task = std::function<void()>;
    // Makes a message on this bus. A negative errno value on failure.
    using Compose = std::function<int(sd_bus*, sd_bus_message**)>;

    struct Answer {
        sd_bus_message* reply; // null when there is none
        const char* error;     // otherwise the name of the D-Bus error
        bool isFromPeer;       // the peer said so itself, rather than the bus for it
    };
    // Runs once, under the connection's lock: reads the answer and returns what is to be done without the lock, or
    // nothing. Its captures are dropped without the lock.
    using Completion = std::function<Task(const Answer&)>;

    class Call;

    class Watch;

    enum class Change { OwnerLost, BusLost };
    using ChangeHandler = std::function<void(Change)>; // runs without the lock

    struct Signal {
        const char* path;
        const char* interface;
        const char* member;
    };
    using SignalHandler = std::function<void(const std::string& argument)>; // runs without the lock

    // The connection that the process shares, opened when there is none. Null when there is no bus.
    static std::shared_ptr<SystemBus> current();
    // Lets current() open another one. Calls that are outstanding here are still answered.
    void retire();

    SystemBus(BusHandle bus, std::string uniqueName);
    ~SystemBus();

    const std::string& uniqueName() const { return _uniqueName; }

    // Sends a call that the owner may abandon. False when it could not be sent, and then no completion runs.
    bool call(const void* owner, const Compose& compose, Completion completion);
    // Sends a call that the same thread then waits for, at most `limit` microseconds; past them the answer is the error
    // NoReply. Null when it could not be sent.
    std::shared_ptr<Call> beginCall(const void* owner, const Compose& compose, Completion completion,
                                    std::uint64_t limit = NoLimit);
    void wait(Call& call);
    // Sends a message that has no answer.
    bool send(const Compose& compose);
    // Answers the owner's outstanding calls with the error Disconnected.
    void abandon(const void* owner);

    // Null when the name is malformed or the connection is lost.
    std::shared_ptr<Watch> watchOwner(const std::string& name, ChangeHandler handler);
    // A signal, whoever sends it, whose first argument is a string. Null when the connection is lost.
    std::shared_ptr<Watch> watchSignal(const Signal& signal, SignalHandler received, ChangeHandler handler);
    void unwatch(const std::shared_ptr<Watch>& watch);

private:
    using Lock = std::unique_lock<std::mutex>;
    struct Deferred;

    static std::shared_ptr<SystemBus> open();
    static int handleReply(sd_bus_message* reply, void* call, sd_bus_error* error);
    static int handleOwnerChange(sd_bus_message* signal, void* watch, sd_bus_error* error);
    static int handleSignal(sd_bus_message* signal, void* watch, sd_bus_error* error);

    std::shared_ptr<Call> begin(const void* owner, const Compose& compose, Completion completion, std::uint64_t limit);
    void finish(Call& call, const Answer& answer);
    bool addWatch(const std::shared_ptr<Watch>& watch, const std::string& rule, sd_bus_message_handler_t handle);
    void tell(const std::shared_ptr<Watch>& watch, Change change);
    void dispatch(Lock& lock);
    bool isUsable();
    void lose();
    bool checkSending(int result, std::uint64_t limit = NoLimit);

    bool step();
    void pump(Lock& lock, const Call& call);
    void poll(Lock& lock);
    void handOver();

    bool needThread();
    bool isNeeded() const;
    void serve();
    void arm(std::uint32_t events);

    std::mutex _mutex;
    BusHandle _bus;
    const std::string _uniqueName;
    std::list<std::shared_ptr<Call>> _calls;
    std::vector<std::shared_ptr<Watch>> _watches;
    std::vector<Deferred> _deferred;
    bool _dispatching = false;
    bool _lost = false;
    bool _retired = false;

    bool _pumping = false;       // a waiting thread reads the socket
    int _polledEvents = 0;       // what it waits for on it
    EventDescriptor _pumpSignal; // wakes it
    std::vector<Call*> _waiting; // the calls of the threads that sleep meanwhile

    bool _serving = false;          // the connection's own thread is there
    std::uint32_t _armedEvents = 0; // what it waits for on the socket
    FileDescriptor _interest;       // the epoll set that it sleeps in
    EventDescriptor _serveSignal;   // wakes it
    std::condition_variable _handedOver;
};

} // namespace platform
