#include "diagnostics/log/LogDateFormatter.h"
#include "tests/diagnostics/log/CountedCalls.h"
#include "tests/diagnostics/log/LogFixture.h"

#include <cstdint>
#include <ctime>
#include <dirent.h>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

void logToFile(const char* format, LogArguments arguments = {})
{
    ZRKLogWithLevel2(LogLevelDefault, format, arguments);
}

int permissionsOf(const std::string& path)
{
    struct stat status{};
    REQUIRE(::stat(path.c_str(), &status) == 0);
    return status.st_mode & 07777;
}

// The open descriptor of a file, or -1.
int descriptorOf(const std::string& path)
{
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry.path(), ignored) == path)
            return std::stoi(entry.path().filename());
    }
    return -1;
}

} // namespace

TEST_CASE_FIXTURE(LogFixture, "the first run makes the folder and the file and counts from nothing")
{
    open();
    CHECK(files() == std::vector<std::string>{"application.log"});
    CHECK(size() == 0);
    logToFile("first");
    CHECK(linesOf(content()).size() == 1);
    CHECK(scripted::log::messages().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a second run appends to the file of the first")
{
    open();
    logToFile("first");
    open();
    logToFile("second");
    auto lines = linesOf(content());
    REQUIRE(lines.size() == 2);
    CHECK(messageOf(lines[0]) == "first");
    CHECK(messageOf(lines[1]) == "second");
}

TEST_CASE_FIXTURE(LogFixture, "a run counts from the size of the file that it finds")
{
    SUBCASE("just below the threshold: the next line still belongs to it")
    {
        makeFile(".log", Threshold - 1);
        open();
        logToFile("still here");
        CHECK_FALSE(exists(".0.log"));
        CHECK(size() > Threshold);
        logToFile("new file");
        CHECK(exists(".0.log"));
        CHECK(messageOf(linesOf(content()).at(0)) == "new file");
    }
    SUBCASE("at the threshold: the next line begins a new file")
    {
        makeFile(".log", Threshold);
        open();
        logToFile("new file");
        CHECK(size(".0.log") == Threshold);
        CHECK(messageOf(linesOf(content()).at(0)) == "new file");
    }
}

TEST_CASE_FIXTURE(LogFixture, "a line reads date, category, process and message, and ends with a newline")
{
    open();
    const auto before = std::time(nullptr);
    logToFile("Running version %@.", {"1234"});
    const auto after = std::time(nullptr);

    bool matches = false;
    for (auto second = before; second <= after; ++second) {
        LogDateFormatter formatter;
        matches |= content() == std::string(formatter.text(second)) + " application[812] Running version 1234.\n";
    }
    CAPTURE(content());
    CHECK(matches);
}

TEST_CASE_FIXTURE(LogFixture, "the level is not written")
{
    open();
    for (LogLevel level : {LogLevelDefault, LogLevelInfo, LogLevelDebug, LogLevelError})
        ZRKLogWithLevel2(level, "the same");
    auto lines = linesOf(content());
    REQUIRE(lines.size() == 4);
    for (const auto& line : lines)
        CHECK(line.substr(line.find(' ', line.find(' ') + 1)) == " application[812] the same");
}

TEST_CASE_FIXTURE(LogFixture, "texts of any script and of many lines are written as they are")
{
    open();
    logToFile("%@", {"Zürich – 東京\nsecond line"});
    CHECK(content().ends_with("] Zürich – 東京\nsecond line\n"));
}

TEST_CASE_FIXTURE(LogFixture, "the category names the file and tags its lines")
{
    ZRKLogInit("com.zerkolin.brevane", "helper");
    logToFile("hello");
    CHECK(files() == std::vector<std::string>{"helper.log"});
}

TEST_CASE_FIXTURE(LogFixture, "the file is for appending, readable by all and not inherited by child processes")
{
    const auto mask = ::umask(022);
    open();
    ::umask(mask);
    CHECK(permissionsOf(path()) == 0644);
    CHECK(permissionsOf(folder()) == 0755);
    int descriptor = descriptorOf(path());
    REQUIRE(descriptor >= 0);
    CHECK((::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0);
    CHECK((::fcntl(descriptor, F_GETFL) & O_APPEND) != 0);
    CHECK((::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_WRONLY);
}

TEST_CASE_FIXTURE(LogFixture, "a line costs one write and no query of the file's size")
{
    open();
    counted::reset();
    for (int number = 0; number < 100; ++number)
        logToFile("line %d", {number});
    CHECK(counted::writes() == 100);
    CHECK(counted::queries() == 0);
    CHECK(linesOf(content()).size() == 100);
}

TEST_CASE_FIXTURE(LogFixture, "a line that crosses the threshold is whole in the old file, and the next one rotates")
{
    makeFile(".log", Threshold - 10);
    open();
    const std::string text(1000, 'x');
    logToFile("%@", {text});
    CHECK(size() > Threshold + 900);
    CHECK(content().ends_with(text + "\n"));
    CHECK_FALSE(exists(".0.log"));
    logToFile("next");
    CHECK(content(".0.log").ends_with(text + "\n"));
    CHECK(messageOf(linesOf(content()).at(0)) == "next");
}

TEST_CASE_FIXTURE(LogFixture, "rotation with only the current file leaves it as the newest old one")
{
    makeFile(".log", Threshold, "current");
    open();
    logToFile("next");
    CHECK(files() == std::vector<std::string>{"application.0.log", "application.log"});
    CHECK(content(".0.log").starts_with("current"));
}

TEST_CASE_FIXTURE(LogFixture, "after five and more rotations four old files are kept and never a fifth")
{
    for (int number = 1; number <= 7; ++number) {
        makeFile(".log", Threshold, "generation " + std::to_string(number));
        open();
        logToFile("rotate");
    }
    CHECK(files()
          == std::vector<std::string>{"application.0.log", "application.1.log", "application.2.log",
                                      "application.3.log", "application.log"});
    CHECK(content(".0.log").starts_with("generation 7"));
    CHECK(content(".1.log").starts_with("generation 6"));
    CHECK(content(".2.log").starts_with("generation 5"));
    CHECK(content(".3.log").starts_with("generation 4"));
}

TEST_CASE_FIXTURE(LogFixture,
                  "rotation deletes a fifth old file that it finds, and the fourth, whose name the third takes")
{
    makeFile(".4.log", 4, "four");
    makeFile(".3.log", 5, "three");
    makeFile(".2.log", 3, "two");
    makeFile(".log", Threshold, "current");
    open();
    logToFile("rotate");
    CHECK(files() == std::vector<std::string>{"application.0.log", "application.3.log", "application.log"});
    CHECK(content(".3.log") == "two");
}

TEST_CASE_FIXTURE(LogFixture, "rotation works with any of the old files missing")
{
    makeFile(".1.log", 3, "one");
    makeFile(".log", Threshold, "current");
    open();
    logToFile("rotate");
    CHECK(files() == std::vector<std::string>{"application.0.log", "application.2.log", "application.log"});
    CHECK(content(".2.log") == "one");
}

TEST_CASE_FIXTURE(LogFixture, "the new file after a rotation is opened like the first and counted from nothing")
{
    const auto mask = ::umask(022);
    makeFile(".log", Threshold);
    open();
    logToFile("one");
    ::umask(mask);
    CHECK(permissionsOf(path()) == 0644);
    CHECK((::fcntl(descriptorOf(path()), F_GETFD) & FD_CLOEXEC) != 0);
    CHECK(descriptorOf(path(".0.log")) == -1);
    logToFile("two");
    CHECK(linesOf(content()).size() == 2);
    CHECK_FALSE(exists(".1.log"));
}

TEST_CASE_FIXTURE(LogFixture, "root, by either user id, logs to the system's folder and everyone else to the home's")
{
    TemporaryDirectory root;
    scripted::system::setRoot(root.path());
    scripted::system::setUserIdentifiers(501, 501);
    CHECK(ZRKLogGetParentPath() == folder());
    for (auto [real, effective] : {std::pair{0U, 0U}, {0U, 501U}, {501U, 0U}}) {
        scripted::system::setUserIdentifiers(real, effective);
        CHECK(ZRKLogGetParentPath() == root.path() + "/Library/Logs/Brevane");
    }
    open();
    logToFile("as root");
    CHECK(std::filesystem::file_size(root.file("Library/Logs/Brevane/application.log")) > 0);
    CHECK_FALSE(std::filesystem::exists(folder()));
}

TEST_CASE_FIXTURE(LogFixture, "lines of many threads are whole, each is there once, and every crossing rotates once")
{
    constexpr int threads = 8;
    constexpr int linesEach = 5000;
    const std::string padding(1000, '.');
    open();
    std::vector<std::thread> writers;
    for (int writer = 0; writer < threads; ++writer) {
        writers.emplace_back([&, writer] {
            for (int number = 0; number < linesEach; ++number)
                logToFile("%d %d %@", {writer, number, padding});
        });
    }
    for (auto& writer : writers)
        writer.join();

    // 41 MB fill four files and begin a fifth.
    REQUIRE(files().size() == 5);
    std::map<std::string, int> seen;
    int last[threads];
    std::fill(std::begin(last), std::end(last), -1);
    for (const char* suffix : {".3.log", ".2.log", ".1.log", ".0.log", ".log"}) {
        auto lines = linesOf(content(suffix));
        if (std::string(suffix) != ".log") {
            CHECK(size(suffix) >= Threshold);
            CHECK(size(suffix) < Threshold + lines.back().size() + 100);
        }
        for (const auto& line : lines) {
            auto message = messageOf(line);
            int writer = -1;
            int number = -1;
            bool isWhole = std::sscanf(message.c_str(), "%d %d", &writer, &number) == 2 && message.ends_with(padding)
                && message.size() == std::to_string(writer).size() + std::to_string(number).size() + 2 + padding.size();
            if (!isWhole || writer < 0 || writer >= threads || last[writer] >= number)
                FAIL_CHECK("a damaged, doubled or late line: " << line);
            else
                last[writer] = number;
            ++seen[message];
        }
    }
    CHECK(seen.size() == threads * linesEach);
    CHECK(scripted::log::messages().empty());
}
