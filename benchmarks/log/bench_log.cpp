// Lines per second into a rotating log file: ours, spdlog's that flushes every line, and a bare write of the same
// bytes. All write the same text to the same file system, in turns; printed are medians over the rounds.

#include "diagnostics/log/ZRKLog.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <latch>
#include <map>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int rounds = 15;
constexpr int linesPerRound = 80'000;
constexpr std::size_t fileSize = 10'000'000;
constexpr std::size_t oldFiles = 4;
constexpr const char* service = "com.zerkolin.brevane.scheduler";

using LineWriter = std::function<void(int)>;

double linesPerSecond(int threads, const LineWriter& write)
{
    std::latch start(threads + 1);
    std::vector<std::thread> writers;
    for (int thread = 0; thread < threads; ++thread) {
        writers.emplace_back([&] {
            start.arrive_and_wait();
            for (int number = 0; number < linesPerRound / threads; ++number)
                write(number);
        });
    }
    start.arrive_and_wait();
    const auto begin = std::chrono::steady_clock::now();
    for (auto& writer : writers)
        writer.join();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    return linesPerRound / elapsed.count();
}

double ours(int threads)
{
    TemporaryDirectory folder;
    EnvironmentVariable root("BREVANE_ROOT", folder.path());
    EnvironmentVariable home("HOME", folder.path());
    ZRKLogInit("com.zerkolin.brevane", "application");
    return linesPerSecond(threads, [](int number) {
        ZRKLogWithLevel2(LogLevelInfo, "Message %d of %@ was answered.", {number, service});
    });
}

double spdlogs(int threads)
{
    TemporaryDirectory folder;
    auto sink =
        std::make_shared<spdlog::sinks::rotating_file_sink_mt>(folder.file("application.log"), fileSize, oldFiles);
    spdlog::logger logger("application", sink);
    logger.set_pattern("%d/%b/%y, %H:%M:%S%z %n[%P] %v");
    logger.flush_on(spdlog::level::trace);
    return linesPerSecond(threads, [&](int number) { logger.info("Message {} of {} was answered.", number, service); });
}

// A line of the average length of ours.
std::string sampleLine()
{
    TemporaryDirectory folder;
    EnvironmentVariable root("BREVANE_ROOT", folder.path());
    EnvironmentVariable home("HOME", folder.path());
    ZRKLogInit("com.zerkolin.brevane", "application");
    ZRKLogWithLevel2(LogLevelInfo, "Message %d of %@ was answered.", {linesPerRound / 2, service});
    std::ifstream file(ZRKLogGetParentPath() + "/application.log");
    std::string line;
    std::getline(file, line);
    return line + "\n";
}

double bareWrites(int threads)
{
    static const auto line = sampleLine();
    TemporaryDirectory folder;
    const int file = ::open(folder.file("application.log").c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    const auto speed = linesPerSecond(threads, [&](int) {
        if (::write(file, line.data(), line.size()) < 0)
            std::perror("write");
    });
    ::close(file);
    return speed;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

} // namespace

int main()
{
    const std::vector<std::pair<const char*, double (*)(int)>> subjects = {
        {"ours", ours}, {"spdlog", spdlogs}, {"write", bareWrites}};
    std::map<std::string, std::vector<double>> speeds;
    for (int round = 0; round < rounds; ++round) {
        for (int threads : {1, 8}) {
            for (const auto& [name, subject] : subjects)
                speeds[std::string("log.") + name + "." + std::to_string(threads)].push_back(subject(threads));
        }
    }
    for (const auto& [name, values] : speeds)
        std::printf("%s %.0f lines/s\n", name.c_str(), median(values));
}
