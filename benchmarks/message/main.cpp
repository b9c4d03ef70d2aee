// The round trip of message 1 with a reply of 1 KB: through the service connection, through a bare sd-bus call with the
// same bytes to the same server over the same bus, and, as the floor, over a socket pair. The three take turns.

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/ServiceConnection.h"
#include "platform/ServiceListener.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateBus.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* Name = "com.zerkolin.brevane.scheduler";
constexpr const char* Path = "/com/zerkolin/brevane/scheduler";
constexpr std::size_t ReplySize = 1024;
constexpr int WarmUps = 500;

int serve()
{
    const platform::Data payload(ReplySize, 0x5A);
    auto listener = platform::ServiceListener::create(
        Name,
        {[&](const platform::ServiceListener::Request&, const platform::ServiceListener::Reply& reply) {
             reply({{"payload", payload}});
         },
         {},
         {}});
    if (!listener)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    return (*listener)->run() ? 0 : 1;
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "bench_message: %s\n", what);
    std::exit(1);
}

void askThroughConnection(platform::ServiceConnection& connection)
{
    const platform::ServiceReply reply = connection.sendSynchronously({{"message", 1}});
    const auto payload = reply ? reply->find("payload") : platform::ServiceDictionary::const_iterator();
    if (!reply || payload == reply->end() || std::get<platform::Data>(payload->second).size() != ReplySize)
        fail("a wrong reply through the connection");
}

void askBare(sd_bus* bus)
{
    sd_bus_message* made = nullptr;
    sd_bus_message* answer = nullptr;
    const void* bytes = nullptr;
    std::size_t size = 0;
    int result = sd_bus_message_new_method_call(bus, &made, Name, Path, Name, "Send");
    const platform::BusMessage message(made);
    if (result >= 0)
        result = sd_bus_message_append(made, "a{sv}", 1, "message", "x", std::int64_t(1));
    if (result >= 0)
        result = sd_bus_call(bus, made, UINT64_MAX, nullptr, &answer);
    const platform::BusMessage reply(answer);
    if (result < 0 || sd_bus_message_enter_container(answer, 'a', "{sv}") < 0
        || sd_bus_message_enter_container(answer, 'e', "sv") < 0 || sd_bus_message_skip(answer, "s") < 0
        || sd_bus_message_enter_container(answer, 'v', "ay") < 0
        || sd_bus_message_read_array(answer, 'y', &bytes, &size) < 0 || size != ReplySize)
        fail("a wrong reply to the bare call");
}

void readAll(int descriptor, std::array<char, ReplySize>& bytes)
{
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = read(descriptor, bytes.data() + done, bytes.size() - done);
        if (count <= 0)
            std::exit(0);
        done += static_cast<std::size_t>(count);
    }
}

// A child that sends everything back; ends with this process, whose end of the pair then closes.
int startMirror()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) < 0)
        fail("no socket pair");
    if (fork() == 0) {
        close(ends[0]);
        for (std::array<char, ReplySize> bytes;;) {
            readAll(ends[1], bytes);
            if (write(ends[1], bytes.data(), bytes.size()) < 0)
                std::exit(0);
        }
    }
    close(ends[1]);
    return ends[0];
}

double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Subject {
    const char* name;
    std::function<void()> ask;
    std::vector<double> microseconds;
};

void measure(std::vector<Subject>& subjects, int count)
{
    using Clock = std::chrono::steady_clock;
    std::minstd_rand random;
    for (int round = -WarmUps; round < count; ++round) {
        // What ran before leaves the processors warm or cold, so the order changes.
        std::shuffle(subjects.begin(), subjects.end(), random);
        for (Subject& subject : subjects) {
            const auto start = Clock::now();
            subject.ask();
            const std::chrono::duration<double, std::micro> taken = Clock::now() - start;
            if (round >= 0)
                subject.microseconds.push_back(taken.count());
        }
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const std::string argument = argumentCount > 1 ? arguments[1] : "";
    if (argument == "--serve")
        return serve();
    const int count = argument.empty() ? 10000 : std::max(1, std::atoi(argument.c_str()));

    const int mirror = startMirror();
    PrivateBus bus;
    ChildProcess server({"/proc/self/exe", "--serve"});
    if (server.readLine() != "ready")
        fail("the server did not start");
    const auto connection =
        platform::ServiceConnection::create(Name, platform::Queue::global(), platform::ServiceConnection::Privileged);
    connection->resume();
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0)
        fail("no bus");
    const platform::BusHandle bare(opened);

    std::vector<Subject> subjects = {
        {"message.ours", [&] { askThroughConnection(*connection); }, {}},
        {"message.bare", [&] { askBare(opened); }, {}},
        {"message.socketpair",
         [&, bytes = std::array<char, ReplySize>()]() mutable {
             if (write(mirror, bytes.data(), bytes.size()) < 0)
                 fail("the mirror is gone");
             readAll(mirror, bytes);
         },
         {}},
    };
    measure(subjects, count);
    for (Subject& subject : subjects)
        std::printf("%s %.1f us\n", subject.name, median(subject.microseconds));
    connection->cancel();
    return 0;
}
