// Starts programs in turn on the same X display and measures, for each, the time from exec to its window being
// mapped, then its proportional memory and how often it wakes while idle. The display must have no other clients that
// map windows.
//
//   bench_startup ROUNDS IDLE-SECONDS [NAME PROGRAM]...

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;

struct Subject {
    std::string name;
    std::string program;
    std::vector<double> milliseconds;
};

[[noreturn]] void fail(const std::string& what)
{
    std::fprintf(stderr, "bench_startup: %s\n", what.c_str());
    std::exit(1);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

class Display {
public:
    Display() : _connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(_connection))
            fail("no X display");
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(_connection)).data->root;
        xcb_change_window_attributes(_connection, root, XCB_CW_EVENT_MASK, &events);
        xcb_flush(_connection);
    }

    void waitForMappedWindow()
    {
        const auto deadline = Clock::now() + std::chrono::seconds(20);
        while (Clock::now() < deadline) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(_connection)) {
                const bool mapped = (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
                std::free(event);
                if (mapped)
                    return;
            }
            pollfd ready{xcb_get_file_descriptor(_connection), POLLIN, 0};
            poll(&ready, 1, 1000);
        }
        fail("no window appeared");
    }

    void drain()
    {
        while (xcb_generic_event_t* event = xcb_poll_for_event(_connection))
            std::free(event);
    }

private:
    xcb_connection_t* _connection;
};

pid_t start(const std::string& program)
{
    char* arguments[] = {const_cast<char*>(program.c_str()), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, program.c_str(), nullptr, nullptr, arguments, environ) != 0)
        fail("cannot start " + program);
    return pid;
}

void stop(pid_t pid)
{
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
}

long proportionalMemory(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string word; file >> word;) {
        long kilobytes = 0;
        if (word == "Pss:" && file >> kilobytes)
            return kilobytes;
    }
    fail("no memory figure");
}

long wakeUps(pid_t pid)
{
    long total = 0;
    const std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    DIR* folder = opendir(tasks.c_str());
    if (!folder)
        fail("the program ended early");
    while (const dirent* entry = readdir(folder)) {
        std::ifstream status(tasks + "/" + entry->d_name + "/status");
        for (std::string word; status >> word;) {
            long count = 0;
            if (word == "voluntary_ctxt_switches:" && status >> count)
                total += count;
        }
    }
    closedir(folder);
    return total;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5 || argc % 2 == 0)
        fail("usage: bench_startup ROUNDS IDLE-SECONDS [NAME PROGRAM]...");
    const int rounds = std::atoi(argv[1]);
    const int idle = std::atoi(argv[2]);
    std::vector<Subject> subjects;
    for (int index = 3; index < argc; index += 2)
        subjects.push_back({argv[index], argv[index + 1], {}});

    Display display;
    for (int round = -1; round < rounds; ++round) { // the first round only warms the caches
        for (Subject& subject : subjects) {
            display.drain();
            const auto begin = Clock::now();
            const pid_t pid = start(subject.program);
            display.waitForMappedWindow();
            const double elapsed = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
            if (round >= 0)
                subject.milliseconds.push_back(elapsed);
            usleep(100'000);
            stop(pid);
        }
    }
    for (const Subject& subject : subjects) {
        display.drain();
        const pid_t pid = start(subject.program);
        display.waitForMappedWindow();
        sleep(2);
        const long memory = proportionalMemory(pid);
        const long before = wakeUps(pid);
        sleep(static_cast<unsigned>(idle));
        const long woken = wakeUps(pid) - before;
        stop(pid);
        std::printf("startup.%s %.1f ms\n", subject.name.c_str(), median(subject.milliseconds));
        std::printf("memory.%s %ld KiB\n", subject.name.c_str(), memory);
        std::printf("wakeups.%s %ld in_%d_s\n", subject.name.c_str(), woken, idle);
    }
    return 0;
}
