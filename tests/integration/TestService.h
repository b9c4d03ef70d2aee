#pragma once

#include "platform/ServiceConnection.h"
#include "tests/support/ChildProcess.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr const char* TestServiceName = "com.zerkolin.brevane.scheduler";

// The peer, ready to be asked. Its messages are listed in service/main.cpp.
std::unique_ptr<ChildProcess> startTestService(const std::string& option = {});

std::optional<std::int64_t> integerIn(const platform::ServiceDictionary& dictionary, std::string_view key);
std::optional<platform::Data> dataIn(const platform::ServiceDictionary& dictionary, std::string_view key);
std::string textIn(const platform::ServiceDictionary& dictionary, std::string_view key);

// Things that arrive on some queue, in order.
template <class T>
class Arrivals {
public:
    void add(T value)
    {
        const std::lock_guard lock(_mutex);
        _values.push_back(std::move(value));
        _arrived.notify_all();
    }

    // What has arrived once there are that many, or after ten seconds.
    std::vector<T> waitFor(std::size_t count)
    {
        std::unique_lock lock(_mutex);
        _arrived.wait_for(lock, std::chrono::seconds(10), [&] { return _values.size() >= count; });
        return _values;
    }

private:
    std::mutex _mutex;
    std::condition_variable _arrived;
    std::vector<T> _values;
};

// A resumed connection to the peer whose events are recorded.
struct RecordedConnection {
    explicit RecordedConnection(const std::string& name = TestServiceName);
    ~RecordedConnection();

    // The events once those that are due by now have been told.
    std::vector<platform::ServiceError> settledEvents();

    std::shared_ptr<platform::Queue> queue;
    std::shared_ptr<Arrivals<platform::ServiceError>> events;
    std::shared_ptr<platform::ServiceConnection> connection;
};
