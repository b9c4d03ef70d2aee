#include "tests/diagnostics/log/LogFixture.h"

#include <doctest/doctest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

using scripted::log::Sink;

TEST_CASE_FIXTURE(LogFixture, "the unified log is used from 10.12 on, the legacy one before")
{
    scripted::system::setOperatingSystemVersion({10, 12, 0});
    open();
    CHECK(ZRKLOG_UNIFIED);
    scripted::system::setOperatingSystemVersion({10, 11, 6});
    open();
    CHECK_FALSE(ZRKLOG_UNIFIED);
    scripted::system::setOperatingSystemVersion({10, 9, 5});
    open();
    CHECK_FALSE(ZRKLOG_UNIFIED);
}

TEST_CASE_FIXTURE(LogFixture, "a message reaches the unified log with its subsystem, category and level, and the file")
{
    open();
    for (LogLevel level : {LogLevelDefault, LogLevelInfo, LogLevelDebug, LogLevelError})
        ZRKLogMessage(level, "%@ is %d", {"level", int(level)});
    auto messages = scripted::log::messages();
    REQUIRE(messages.size() == 4);
    for (const auto& message : messages) {
        CHECK(message.sink == Sink::Unified);
        CHECK(message.subsystem == "com.zerkolin.brevane");
        CHECK(message.category == "application");
        CHECK(message.text == "level is " + std::to_string(message.type));
    }
    CHECK(messages[3].type == 16);
    auto lines = linesOf(content());
    REQUIRE(lines.size() == 4);
    CHECK(messageOf(lines[2]) == "level is 2");
}

TEST_CASE_FIXTURE(LogFixture, "the system's log comes before the file")
{
    for (platform::OperatingSystemVersion version : {platform::OperatingSystemVersion{14, 0, 0}, {10, 11, 0}}) {
        scripted::log::reset();
        scripted::system::setOperatingSystemVersion(version);
        open();
        ZRKLogMessage(LogLevelError, "caf\xE9");
        auto messages = scripted::log::messages();
        REQUIRE(messages.size() == 2);
        CHECK(messages[0].sink != Sink::Default);
        CHECK(messages[1].sink == Sink::Default); // the file's failure
    }
}

TEST_CASE_FIXTURE(LogFixture,
                  "a debug message reaches the unified log and the file, and on an old system only the file")
{
    open();
    ZRKLogMessage(LogLevelDebug, "new");
    CHECK(scripted::log::messages().size() == 1);
    scripted::log::reset();
    scripted::system::setOperatingSystemVersion({10, 11, 0});
    open();
    ZRKLogMessage(LogLevelDebug, "old");
    CHECK(scripted::log::messages().empty());
    auto lines = linesOf(content());
    REQUIRE(lines.size() == 2);
    CHECK(messageOf(lines[1]) == "old");
}

TEST_CASE_FIXTURE(LogFixture, "on an old system errors reach the legacy log as Error, and info and default as Warning")
{
    scripted::system::setOperatingSystemVersion({10, 11, 0});
    open();
    ZRKLogMessage(LogLevelDefault, "a %@", {"default"});
    ZRKLogMessage(LogLevelInfo, "an %@", {"info"});
    ZRKLogMessage(LogLevelError, "an %@", {"error"});
    auto messages = scripted::log::messages();
    REQUIRE(messages.size() == 3);
    for (const auto& message : messages) {
        CHECK(message.sink == Sink::Legacy);
        CHECK(message.subsystem == "com.zerkolin.brevane");
    }
    CHECK(messages[0].level == "Warning");
    CHECK(messages[0].text == "a default");
    CHECK(messages[1].level == "Warning");
    CHECK(messages[1].text == "an info");
    CHECK(messages[2].level == "Error");
    CHECK(messages[2].text == "an error");
    CHECK(linesOf(content()).size() == 3);
}

TEST_CASE_FIXTURE(LogFixture, "of a legacy message's level only the low byte counts")
{
    scripted::system::setOperatingSystemVersion({10, 11, 0});
    open();
    for (int level : {0x110, -240, 0x1001, 17, 2})
        _ZRKLog(level, "level");
    std::vector<std::string> levels;
    for (const auto& message : scripted::log::messages())
        levels.push_back(message.level);
    CHECK(levels == std::vector<std::string>{"Error", "Error", "Warning", "Warning", "Warning"});
    CHECK(content().empty());
}

TEST_CASE_FIXTURE(LogFixture, "a legacy message has been handed over when the call returns, from any thread")
{
    scripted::system::setOperatingSystemVersion({10, 11, 0});
    open();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([thread] {
            for (int number = 0; number < 50; ++number) {
                const auto text = std::to_string(thread) + "." + std::to_string(number);
                _ZRKLog(LogLevelInfo, "%@", {text});
                bool found = false;
                for (const auto& message : scripted::log::messages())
                    found |= message.text == text;
                if (!found)
                    FAIL_CHECK("not there yet: " << text);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    _ZRKLogSync();
    CHECK(scripted::log::messages().size() == 400);
}
