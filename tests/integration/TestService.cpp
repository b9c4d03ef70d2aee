#include "tests/integration/TestService.h"

#include <chrono>
#include <stdexcept>
#include <thread>

std::unique_ptr<ChildProcess> startTestService(const std::string& option)
{
    ChildProcess::Arguments arguments = {BREVANE_TEST_SERVICE, TestServiceName};
    if (!option.empty())
        arguments.push_back(option);
    auto service = std::make_unique<ChildProcess>(arguments);
    if (service->readLine() != "ready")
        throw std::runtime_error("the test service did not start");
    return service;
}

std::optional<std::int64_t> integerIn(const platform::ServiceDictionary& dictionary, std::string_view key)
{
    const auto found = dictionary.find(key);
    const auto* value = found == dictionary.end() ? nullptr : std::get_if<std::int64_t>(&found->second);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<platform::Data> dataIn(const platform::ServiceDictionary& dictionary, std::string_view key)
{
    const auto found = dictionary.find(key);
    const auto* value = found == dictionary.end() ? nullptr : std::get_if<platform::Data>(&found->second);
    return value ? std::optional(*value) : std::nullopt;
}

std::string textIn(const platform::ServiceDictionary& dictionary, std::string_view key)
{
    const platform::Data data = dataIn(dictionary, key).value_or(platform::Data());
    return {data.begin(), data.end()};
}

RecordedConnection::RecordedConnection(const std::string& name)
    : queue(platform::Queue::createSerial("com.zerkolin.test.events")),
      events(std::make_shared<Arrivals<platform::ServiceError>>()),
      connection(platform::ServiceConnection::create(name, queue, platform::ServiceConnection::Privileged))
{
    connection->setEventHandler([recorded = events](platform::ServiceError event) { recorded->add(event); });
    connection->resume();
}

RecordedConnection::~RecordedConnection()
{
    connection->cancel();
}

std::vector<platform::ServiceError> RecordedConnection::settledEvents()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    queue->sync([] { });
    return events->waitFor(0);
}
