#include "tests/diagnostics/log/CountedCalls.h"
#include "tests/diagnostics/log/LogFixture.h"

#include <cerrno>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace {

// What was reported to the default log.
std::vector<std::string> reports()
{
    std::vector<std::string> texts;
    for (const auto& message : scripted::log::messages()) {
        if (message.sink == scripted::log::Sink::Default) {
            CHECK(message.type == 16);
            texts.push_back(message.text);
        }
    }
    return texts;
}

std::vector<std::string> unifiedMessages()
{
    std::vector<std::string> texts;
    for (const auto& message : scripted::log::messages()) {
        if (message.sink == scripted::log::Sink::Unified)
            texts.push_back(message.text);
    }
    return texts;
}

// Limits the size of the files that the process writes, without the signal that comes with it.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        _handler = ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &_earlier);
        const rlimit limit{bytes, _earlier.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &_earlier);
        ::signal(SIGXFSZ, _handler);
    }

private:
    rlimit _earlier{};
    sighandler_t _handler = nullptr;
};

} // namespace

TEST_CASE_FIXTURE(LogFixture, "a file that cannot be opened is reported once, and logging goes on without it")
{
    home().write("Library/Logs/Brevane", "a file in the folder's place");
    open();
    CHECK(reports() == std::vector{"Failed to open log file (" + std::to_string(ENOTDIR) + ")."});
    ZRKLogMessage(LogLevelDefault, "one");
    ZRKLogMessage(LogLevelError, "two");
    CHECK(reports().size() == 1);
    CHECK(unifiedMessages() == std::vector<std::string>{"one", "two"});
}

TEST_CASE_FIXTURE(LogFixture, "a file that cannot be examined is reported, and written to as if it were empty")
{
    makeFile(".log", Threshold);
    counted::failQueries(EIO);
    open();
    counted::failQueries(0);
    CHECK(reports() == std::vector{"Failed to stat log file (" + std::to_string(EIO) + ")."});
    ZRKLogWithLevel2(LogLevelDefault, "counted from nothing");
    CHECK_FALSE(exists(".0.log"));
    CHECK(size() > Threshold);
}

TEST_CASE_FIXTURE(LogFixture, "a format that is not text is reported raw and not written")
{
    open();
    ZRKLogWithLevel2(LogLevelDefault, "caf\xE9 %@", {"x"});
    CHECK(reports() == std::vector<std::string>{"Could not convert string 'caf\xE9 %@'."});
    CHECK(content().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a format that cannot be filled is reported raw and not written")
{
    open();
    ZRKLogWithLevel2(LogLevelDefault, "left %@ and right %@", {"x"});
    CHECK(reports() == std::vector<std::string>{"Could not format string 'left %@ and right %@'."});
    CHECK(content().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a line that is not UTF-8 is reported whole and not written")
{
    open();
    ZRKLogWithLevel2(LogLevelDefault, "name %@", {"caf\xE9"});
    auto texts = reports();
    REQUIRE(texts.size() == 1);
    CHECK(texts[0].starts_with("Could not get data for string '"));
    CHECK(texts[0].ends_with(" application[812] name caf\xE9\n'."));
    CHECK(content().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a write that fails is reported with the line, each time, and does not count")
{
    std::filesystem::create_directories(folder());
    std::filesystem::create_symlink("/dev/full", path());
    open();
    ZRKLogWithLevel2(LogLevelDefault, "no space");
    ZRKLogWithLevel2(LogLevelDefault, "still none");
    auto texts = reports();
    REQUIRE(texts.size() == 2);
    CHECK(texts[0].starts_with("Failed to write to log file (" + std::to_string(ENOSPC) + ") '"));
    CHECK(texts[0].ends_with(" application[812] no space\n'."));
    CHECK(texts[1].ends_with(" application[812] still none\n'."));
}

TEST_CASE_FIXTURE(LogFixture, "a line that was written in part counts with its whole length")
{
    makeFile(".log", Threshold - 20);
    open();
    {
        FileSizeLimit limit(Threshold - 10);
        ZRKLogWithLevel2(LogLevelDefault, "cut short");
    }
    CHECK(reports().empty());
    CHECK(size() == Threshold - 10);
    ZRKLogWithLevel2(LogLevelDefault, "in a new file");
    CHECK(size(".0.log") == Threshold - 10);
    CHECK(messageOf(linesOf(content()).at(0)) == "in a new file");
}

TEST_CASE_FIXTURE(LogFixture,
                  "when the new file cannot be opened, that line is reported and all later ones are dropped silently")
{
    makeFile(".log", Threshold);
    open();
    std::filesystem::rename(folder(), folder() + ".away");
    ZRKLogWithLevel2(LogLevelDefault, "without a file");
    auto texts = reports();
    REQUIRE(texts.size() == 1);
    CHECK(texts[0].starts_with("Failed to write to log file (" + std::to_string(EBADF) + ") '"));
    CHECK(texts[0].ends_with(" application[812] without a file\n'."));

    std::filesystem::rename(folder() + ".away", folder());
    ZRKLogWithLevel2(LogLevelDefault, "dropped");
    CHECK(reports().size() == 1);
    CHECK(size() == Threshold);
}

TEST_CASE_FIXTURE(LogFixture, "failures of the file are never reported to the log's own sinks")
{
    home().write("Library/Logs/Brevane", "");
    open();
    ZRKLogWithLevel2(LogLevelDefault, "%@");
    CHECK(reports().size() == 2);
    CHECK(unifiedMessages().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a format that cannot be filled still reaches the system's log as it is")
{
    open();
    ZRKLogMessage(LogLevelError, "lost %@");
    CHECK(unifiedMessages() == std::vector<std::string>{"lost %@"});
    CHECK(reports() == std::vector<std::string>{"Could not format string 'lost %@'."});
}
