#include "platform/SystemLog.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <doctest/doctest.h>
#include <errno.h>
#include <fcntl.h>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

struct StoreFixture {
    std::string content(const std::string& name) const { return contentOfFile(_root.file("var/log/" + name)); }
    std::vector<std::string> lines(const std::string& name) const
    {
        std::vector<std::string> lines;
        std::istringstream stream(content(name));
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        return lines;
    }

    TemporaryDirectory _root;
    EnvironmentVariable _variable{"BREVANE_ROOT", _root.path()};
};

std::string programPath()
{
    std::string path(4096, '\0');
    path.resize(static_cast<std::size_t>(::readlink("/proc/self/exe", path.data(), path.size())));
    return path;
}

// Whether the text looks like the sample, in which every digit and every sign stands for any other.
bool looksLike(std::string_view text, std::string_view sample)
{
    auto kind = [](char character) {
        return character >= '0' && character <= '9' ? '0' : character == '-' ? '+' : character;
    };
    return std::ranges::equal(text, sample, {}, kind, kind);
}

std::string membersAfterTimestamp(const std::string& line)
{
    constexpr std::string_view sample = R"({"timestamp":"2026-11-20 09:56:22.123456+0100")";
    return looksLike(line.substr(0, sample.size()), sample) ? line.substr(sample.size()) : "no timestamp: " + line;
}

} // namespace

TEST_CASE_FIXTURE(StoreFixture, "a sandbox's log holds a message as the log tool prints it, one object a line")
{
    auto log = platform::SystemLog::create("com.zerkolin.brevane", "application");
    log->message(16, "Failed to read logs. \"why\"");
    auto found = lines("system.jsonl");
    REQUIRE(found.size() == 1);
    CHECK(membersAfterTimestamp(found[0])
          == R"(,"messageType":"Error","subsystem":"com.zerkolin.brevane","category":"application",)"
             R"("eventMessage":"Failed to read logs. \"why\"","processImagePath":")"
              + programPath() + R"(","processID":)" + std::to_string(::getpid()) + "}");
    CHECK(content("system.jsonl").ends_with("}\n"));
}

TEST_CASE_FIXTURE(StoreFixture, "message types have their names, and an unknown one is a default message")
{
    auto log = platform::SystemLog::create("s", "c");
    for (std::uint8_t type : {0, 1, 2, 16, 17, 99})
        log->message(type, "x");
    std::vector<std::string> names;
    for (const auto& line : lines("system.jsonl")) {
        auto members = membersAfterTimestamp(line);
        names.push_back(members.substr(0, members.find(",\"subsystem\"")));
    }
    CHECK(names
          == std::vector<std::string>{R"(,"messageType":"Default")", R"(,"messageType":"Info")",
                                      R"(,"messageType":"Debug")", R"(,"messageType":"Error")",
                                      R"(,"messageType":"Fault")", R"(,"messageType":"Default")"});
}

TEST_CASE_FIXTURE(StoreFixture, "the time is the local one with its zone")
{
    EnvironmentVariable zone("TZ", "XXX-5:30");
    const auto before = std::time(nullptr);
    platform::SystemLog::create("s", "c")->message(0, "x");
    const auto after = std::time(nullptr);
    auto line = content("system.jsonl");
    tm parts{};
    const char* end = ::strptime(line.c_str(), "{\"timestamp\":\"%Y-%m-%d %H:%M:%S", &parts);
    REQUIRE(end);
    CHECK(std::string(end + 7, 5) == "+0530");
    const auto second = ::timegm(&parts) - (5 * 60 + 30) * 60;
    CHECK(second >= before);
    CHECK(second <= after);
}

TEST_CASE_FIXTURE(StoreFixture, "any bytes make a valid line")
{
    platform::SystemLog::create("s", "c")->message(0, "caf\xE9\n\x01\"");
    auto found = lines("system.jsonl");
    REQUIRE(found.size() == 1);
    CHECK(found[0].find(R"("eventMessage":"caf)"
                        "\uFFFD"
                        R"(\n\u0001\"")")
          != std::string::npos);
}

TEST_CASE_FIXTURE(StoreFixture, "lines of many threads with logs of their own are whole")
{
    constexpr std::size_t threads = 4;
    constexpr std::size_t linesEach = 500;
    const std::string text(300, 'x');
    std::vector<std::thread> writers;
    for (std::size_t writer = 0; writer < threads; ++writer) {
        writers.emplace_back([&] {
            auto log = platform::SystemLog::create("s", "c");
            for (std::size_t number = 0; number < linesEach; ++number)
                log->message(0, text);
        });
    }
    for (auto& writer : writers)
        writer.join();
    auto found = lines("system.jsonl");
    CHECK(found.size() == threads * linesEach);
    for (const auto& line : found)
        REQUIRE((line.starts_with("{\"timestamp\":\"") && line.ends_with("}")
                 && line.find("\"" + text + "\"") != std::string::npos));
}

TEST_CASE_FIXTURE(StoreFixture, "a failure of logging is an error of no subsystem, and is told on standard error too")
{
    inForkedProcess([this] {
        int file = ::open(_root.file("stderr").c_str(), O_WRONLY | O_CREAT, 0600);
        ::dup2(file, STDERR_FILENO);
        platform::reportToDefaultLog("Failed to open log file (13).");
        return std::string();
    });
    auto found = lines("system.jsonl");
    REQUIRE(found.size() == 1);
    CHECK(membersAfterTimestamp(found[0]).starts_with(R"(,"messageType":"Error","subsystem":"","category":"",)"
                                                      R"("eventMessage":"Failed to open log file (13).",)"));
    CHECK(contentOfFile(_root.file("stderr")) == "Failed to open log file (13).\n");
}

TEST_CASE_FIXTURE(StoreFixture, "a sandbox's legacy log holds time, sender, facility, level and message")
{
    const auto before = std::time(nullptr);
    auto log = platform::LegacyLog::open("com.zerkolin.brevane");
    log->send("Warning", "careful\n");
    const auto after = std::time(nullptr);
    auto found = lines("asl.jsonl");
    REQUIRE(found.size() == 1);
    long long time = 0;
    int length = 0;
    REQUIRE(std::sscanf(found[0].c_str(), "{\"Time\":\"%lld\"%n", &time, &length) == 1);
    CHECK(time >= before);
    CHECK(time <= after);
    CHECK(found[0].substr(static_cast<std::size_t>(length))
          == R"(,"Sender":")" + std::string(program_invocation_short_name)
              + R"(","Facility":"com.zerkolin.brevane","Level":"Warning","Message":"careful\n"})");
}

TEST_CASE("a store that cannot be made loses its messages and nothing else")
{
    TemporaryDirectory folder;
    auto file = folder.write("file", "");
    EnvironmentVariable variable("BREVANE_ROOT", file);
    auto log = platform::SystemLog::create("s", "c");
    log->message(0, "lost");
    platform::LegacyLog::open("f")->send("Error", "lost");
    CHECK(contentOfFile(file).empty());
}
