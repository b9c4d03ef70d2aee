#include "tests/platform/ScriptedServiceConnection.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <utility>

namespace scripted::service {

namespace {

using platform::Queue;
using platform::ServiceDictionary;
using platform::ServiceError;
using platform::ServiceReply;

class PlayedConnection;
using Completion = std::function<void(ServiceReply)>;

struct Held {
    std::weak_ptr<PlayedConnection> connection;
    const PlayedConnection* identity = nullptr; // for the destructor, when the weak reference is gone
    ServiceDictionary message;
    Completion completion;
};

struct Script {
    std::mutex mutex;
    std::condition_variable requestArrived;
    std::deque<ServiceReply> answers;
    std::function<ServiceReply(const ServiceDictionary&)> handler;
    bool holds = false;
    std::vector<Held> held;
    std::vector<Request> requests;
    std::vector<std::shared_ptr<Connection>> connections;
    std::vector<std::weak_ptr<PlayedConnection>> players;
};

// Never destroyed: the work queues outlive main.
Script& script()
{
    static Script* const shared = new Script;
    return *shared;
}

ServiceReply nextAnswer(const ServiceDictionary& message)
{
    std::unique_lock lock(script().mutex);
    if (!script().answers.empty()) {
        auto answer = std::move(script().answers.front());
        script().answers.pop_front();
        return answer;
    }
    const auto handler = script().handler;
    lock.unlock();
    return handler ? handler(message) : std::unexpected(ServiceError::Invalid);
}

std::vector<Held> takeHeld(const PlayedConnection* connection)
{
    const std::lock_guard lock(script().mutex);
    std::vector<Held> taken;
    std::erase_if(script().held, [&](Held& held) {
        if (connection && held.identity != connection)
            return false;
        taken.push_back(std::move(held));
        return true;
    });
    return taken;
}

class PlayedConnection final : public platform::ServiceConnection,
                               public std::enable_shared_from_this<PlayedConnection> {
public:
    PlayedConnection(std::shared_ptr<Connection> record, std::size_t index)
        : _record(std::move(record)),
          _target(_record->target),
          _index(index)
    {
    }

    ~PlayedConnection() override
    {
        for (auto& held : takeHeld(this))
            held.completion(std::unexpected(ServiceError::Invalid));
    }

    void setEventHandler(EventHandler handler) override { _eventHandler = std::move(handler); }

    void resume() override
    {
        const std::lock_guard lock(script().mutex);
        _record->resumed = true;
    }

    void send(const ServiceDictionary& message) override
    {
        if (record(message, Mode::OneWay) == Path::Dead)
            return;
        std::unique_lock lock(script().mutex);
        const auto handler = script().handler;
        lock.unlock();
        const auto unheard = handler ? handler(message) : ServiceReply();
        static_cast<void>(unheard);
    }

    void send(const ServiceDictionary& message, std::shared_ptr<Queue> replyQueue, ReplyHandler handler) override
    {
        start(message, Mode::Asynchronous,
              [replyQueue, handler](ServiceReply reply) { replyQueue->async([handler, reply] { handler(reply); }); });
    }

    ServiceReply sendSynchronously(const ServiceDictionary& message) override
    {
        const auto promise = std::make_shared<std::promise<ServiceReply>>();
        auto reply = promise->get_future();
        start(message, Mode::Synchronous, [promise](ServiceReply answer) { promise->set_value(std::move(answer)); });
        return reply.get();
    }

    void cancel() override
    {
        {
            const std::lock_guard lock(script().mutex);
            _record->canceled = true;
        }
        auto held = takeHeld(this);
        fail(ServiceError::Invalid, [held = std::move(held)] {
            for (const auto& each : held)
                each.completion(std::unexpected(ServiceError::Invalid));
        });
    }

    bool isInvalid() const override
    {
        const std::lock_guard lock(script().mutex);
        return _dead;
    }

    void complete(const ServiceReply& reply, const Completion& completion)
    {
        if (reply)
            completion(reply);
        else
            fail(reply.error(), [completion, reply] { completion(reply); });
    }

    // Tells the event handler, once if the connection is lost for good, and goes on after that.
    void fail(ServiceError error, std::function<void()> next)
    {
        EventHandler handler;
        {
            const std::lock_guard lock(script().mutex);
            if (!std::exchange(_dead, _dead || error == ServiceError::Invalid) && _record->resumed)
                handler = _eventHandler;
        }
        _target->async([self = shared_from_this(), handler, error, next = std::move(next)] {
            if (handler)
                handler(error);
            next();
        });
    }

private:
    enum class Path { Dead, Held, Answered };

    Path record(const ServiceDictionary& message, Mode mode, const Completion& completion = {})
    {
        const std::lock_guard lock(script().mutex);
        script().requests.push_back({_index, mode, message});
        script().requestArrived.notify_all();
        if (_dead || !_record->resumed)
            return Path::Dead;
        if (!script().holds || !completion)
            return Path::Answered;
        script().held.push_back({weak_from_this(), this, message, completion});
        return Path::Held;
    }

    void start(const ServiceDictionary& message, Mode mode, const Completion& completion)
    {
        const auto path = record(message, mode, completion);
        if (path == Path::Dead)
            completion(std::unexpected(ServiceError::Invalid));
        else if (path == Path::Answered)
            complete(nextAnswer(message), completion);
    }

    std::shared_ptr<Connection> _record;
    std::shared_ptr<Queue> _target;
    std::size_t _index;
    EventHandler _eventHandler;
    bool _dead = false;
};

void finishHeld(const std::function<ServiceReply(const ServiceDictionary&)>& answer)
{
    for (auto& held : takeHeld(nullptr)) {
        if (const auto connection = held.connection.lock())
            connection->complete(answer(held.message), held.completion);
        else
            held.completion(std::unexpected(ServiceError::Invalid));
    }
}

// Every connection hears the error once, however many requests wait on it.
void failEverywhere(ServiceError error)
{
    std::vector<std::weak_ptr<PlayedConnection>> players;
    {
        const std::lock_guard lock(script().mutex);
        players = script().players;
    }
    for (const auto& weak : players) {
        const auto player = weak.lock();
        if (!player)
            continue;
        std::promise<void> heard;
        player->fail(error, [&heard, error, held = takeHeld(player.get())] {
            for (const auto& each : held)
                each.completion(std::unexpected(error));
            heard.set_value();
        });
        heard.get_future().wait();
    }
}

} // namespace

void reset()
{
    failEverywhere(ServiceError::Invalid);
    const std::lock_guard lock(script().mutex);
    script().answers.clear();
    script().handler = nullptr;
    script().holds = false;
    script().requests.clear();
    script().connections.clear();
    script().players.clear();
}

void answer(ServiceReply reply)
{
    const std::lock_guard lock(script().mutex);
    script().answers.push_back(std::move(reply));
}

void setHandler(std::function<ServiceReply(const ServiceDictionary&)> handler)
{
    const std::lock_guard lock(script().mutex);
    script().handler = std::move(handler);
}

void hold()
{
    const std::lock_guard lock(script().mutex);
    script().holds = true;
}

void release()
{
    {
        const std::lock_guard lock(script().mutex);
        script().holds = false;
    }
    finishHeld(nextAnswer);
}

void interrupt()
{
    failEverywhere(ServiceError::Interrupted);
}

void invalidate()
{
    failEverywhere(ServiceError::Invalid);
}

std::vector<Request> requests()
{
    const std::lock_guard lock(script().mutex);
    return script().requests;
}

std::vector<Connection> connections()
{
    const std::lock_guard lock(script().mutex);
    std::vector<Connection> records;
    for (const auto& record : script().connections)
        records.push_back(*record);
    return records;
}

bool waitForRequests(std::size_t count)
{
    std::unique_lock lock(script().mutex);
    return script().requestArrived.wait_for(lock, std::chrono::seconds(10),
                                            [&] { return script().requests.size() >= count; });
}

} // namespace scripted::service

namespace platform {

std::shared_ptr<ServiceConnection> ServiceConnection::create(const std::string& serviceName,
                                                             std::shared_ptr<Queue> target, unsigned flags)
{
    using namespace scripted::service;
    const auto record = std::make_shared<Connection>(Connection{serviceName, flags, std::move(target), false, false});
    const std::lock_guard lock(script().mutex);
    auto connection = std::make_shared<PlayedConnection>(record, script().connections.size());
    script().connections.push_back(record);
    script().players.push_back(connection);
    return connection;
}

} // namespace platform
