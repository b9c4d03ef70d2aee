// The quiet side of script/campaign floods: what a user has to wait who asks now and then while others flood the bus.
//
//     bench_floods ask MILLISECONDS     asks message 1 and then the bus itself, fifty times a second, and prints how
//     long
//                                       each answer took, a line of milliseconds for each of the two; -1: refused
//     bench_floods serve                stands in for the helper and answers at once, whoever asks and whatever: what
//     no
//                                       service can do better

#include "platform/linux/system/bus/BusHandles.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr const char* Name = "com.zerkolin.brevane.scheduler";
constexpr const char* Path = "/com/zerkolin/brevane/scheduler";
constexpr std::size_t ReplySize = 1024;
constexpr std::chrono::milliseconds Pause(20);

using Clock = std::chrono::steady_clock;

platform::BusHandle connect()
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0) {
        std::fputs("bench_floods: there is no bus\n", stderr);
        std::exit(1);
    }
    return platform::BusHandle(bus);
}

int appendPayload(sd_bus_message* message)
{
    static const std::vector<std::uint8_t> bytes(ReplySize, 0x5A);
    int result = sd_bus_message_open_container(message, 'a', "{sv}");
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'e', "sv");
    if (result >= 0)
        result = sd_bus_message_append(message, "s", "payload");
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'v', "ay");
    if (result >= 0)
        result = sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size());
    for (int container = 0; container < 3 && result >= 0; ++container)
        result = sd_bus_message_close_container(message);
    return result;
}

int answer(sd_bus_message* request, void*, sd_bus_error*)
{
    if (sd_bus_message_get_expect_reply(request) <= 0)
        return 1;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_return(request, &made);
    const platform::BusMessage reply(made);
    if (result >= 0)
        result = appendPayload(made);
    return result < 0 ? result : sd_bus_send(nullptr, made, nullptr);
}

int serve()
{
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Send", "a{sv}", "a{sv}", &answer, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    const auto bus = connect();
    if (sd_bus_add_object_vtable(bus.get(), nullptr, Path, Name, methods, nullptr) < 0
        || sd_bus_request_name(bus.get(), Name, 0) < 0)
        return 1;
    for (;;) {
        const int result = sd_bus_process(bus.get(), nullptr);
        if (result < 0 || (result == 0 && sd_bus_wait(bus.get(), UINT64_MAX) < 0))
            return 1;
    }
}

// How long it takes, in milliseconds, until the answer is there; -1 when it is an error.
double timeOf(sd_bus* bus, sd_bus_message* message)
{
    const auto begin = Clock::now();
    sd_bus_message* made = nullptr;
    const int result = sd_bus_call(bus, message, 60'000'000, nullptr, &made);
    const std::chrono::duration<double, std::milli> taken = Clock::now() - begin;
    const platform::BusMessage reply(made);
    return result < 0 ? -1 : taken.count();
}

platform::BusMessage question(sd_bus* bus)
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, Name, Path, Name, "Send") >= 0)
        sd_bus_message_append(made, "a{sv}", 1, "message", "x", std::int64_t(1));
    return platform::BusMessage(made);
}

platform::BusMessage questionToBus(sd_bus* bus)
{
    sd_bus_message* made = nullptr;
    const char* driver = "org.freedesktop.DBus";
    sd_bus_message_new_method_call(bus, &made, driver, "/org/freedesktop/DBus", driver, "GetId");
    return platform::BusMessage(made);
}

void print(const std::vector<double>& times)
{
    for (const double time : times)
        std::printf("%.3f ", time);
    std::putchar('\n');
}

int ask(std::chrono::milliseconds duration)
{
    const auto bus = connect();
    std::vector<double> service;
    std::vector<double> own;
    for (const auto end = Clock::now() + duration; Clock::now() < end; std::this_thread::sleep_for(Pause)) {
        service.push_back(timeOf(bus.get(), question(bus.get()).get()));
        own.push_back(timeOf(bus.get(), questionToBus(bus.get()).get()));
    }
    print(service);
    print(own);
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 2 && std::strcmp(arguments[1], "serve") == 0)
        return serve();
    if (count == 3 && std::strcmp(arguments[1], "ask") == 0)
        return ask(std::chrono::milliseconds(std::atol(arguments[2])));
    std::fputs("usage: bench_floods ask MILLISECONDS | serve\n", stderr);
    return 1;
}
