// A service whose answers a test orders with the message's number:
//
//   1  at once: "payload" of as many bytes as "size" says, and "sender"
//   2  never, while it lives
//   3  it ends without an answer
//   4  from another thread, after "delay" milliseconds, with "echo"
//   5  with the number of messages 6 so far
//   6  one way
//   7  with the sizes of what came: "size" of the payload, "entries" of the dictionary
//   8  it drops the request
//   9  with an integer, text, bytes and a nested dictionary, of which only some may travel
//  10  with the text of an error instead of a dictionary
//  11  with a body that is no dictionary
//
// 9 to 11 are beyond what a listener would send and are served with `--raw`.

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/bus/ServiceMessage.h"
#include "platform/ServiceListener.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

std::unique_ptr<platform::ServiceListener> listener;
std::vector<platform::ServiceListener::Reply> unanswered;
std::int64_t received = 0;

std::int64_t integer(const platform::ServiceDictionary& dictionary, const char* key)
{
    const auto found = dictionary.find(key);
    const auto* value = found == dictionary.end() ? nullptr : std::get_if<std::int64_t>(&found->second);
    return value ? *value : 0;
}

platform::Data bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

void answer(const platform::ServiceListener::Request& request, const platform::ServiceListener::Reply& reply)
{
    const auto payload = request.message.find("payload");
    switch (integer(request.message, "message")) {
    case 1:
        reply({{"payload", platform::Data(static_cast<std::size_t>(integer(request.message, "size")), 0x5A)},
               {"sender", bytes(request.sender)}});
        return;
    case 2:
        unanswered.push_back(reply);
        return;
    case 3:
        _exit(0);
    case 4:
        std::thread([reply, message = request.message] {
            std::this_thread::sleep_for(std::chrono::milliseconds(integer(message, "delay")));
            reply({{"echo", integer(message, "echo")}});
        }).detach();
        return;
    case 5:
        reply({{"received", received}});
        return;
    case 6:
        ++received;
        reply({{"unasked", 1}});
        return;
    case 7:
        reply({{"size",
                payload == request.message.end()
                    ? -1
                    : static_cast<std::int64_t>(std::get<platform::Data>(payload->second).size())},
               {"entries", static_cast<std::int64_t>(request.message.size())}});
        return;
    default:
        return;
    }
}

void handle(const platform::ServiceListener::Request& request, const platform::ServiceListener::Reply& reply)
{
    answer(request, reply ? reply : [](const platform::ServiceDictionary&) { });
}

int handleRaw(sd_bus_message* request, void*, sd_bus_error* error)
{
    const auto message = platform::readServiceDictionary(request);
    switch (message ? integer(*message, "message") : 0) {
    case 9:
        return sd_bus_reply_method_return(request, "a{sv}", 5, "number", "x", std::int64_t(7), "text", "s", "words",
                                          "small", "i", 3, "payload", "ay", 2, 1, 2, "nested", "a{sv}", 1, "inner", "v",
                                          "x", std::int64_t(1));
    case 10:
        return sd_bus_error_set(error, "com.example.Error.Whatever", "no");
    default:
        return sd_bus_reply_method_return(request, "as", 1, "no dictionary");
    }
}

int serveRaw(const char* name)
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0)
        return 1;
    const platform::BusHandle owner(bus);
    if (sd_bus_add_object(bus, nullptr, platform::servicePath(name).c_str(), handleRaw, nullptr) < 0
        || sd_bus_request_name(bus, name, 0) < 0)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    while (sd_bus_process(bus, nullptr) >= 0 && sd_bus_wait(bus, UINT64_MAX) >= 0) { }
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 3 && std::strcmp(arguments[2], "--raw") == 0)
        return serveRaw(arguments[1]);
    auto created = platform::ServiceListener::create(count > 1 ? arguments[1] : "", {handle, {}, {}});
    if (!created) {
        std::fprintf(stderr, "%s\n", created.error().c_str());
        std::puts("failed");
        return 1;
    }
    listener = std::move(*created);
    std::signal(SIGTERM, [](int) { listener->stop(); });
    std::puts("ready");
    std::fflush(stdout);
    return listener->run() ? 0 : 3;
}
