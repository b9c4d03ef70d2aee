#include "tests/console/ConsoleFixture.h"
#include "tests/platform/ScriptedLegacyLogSearch.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ScriptedSystemInformation.h"

#include <cerrno>
#include <doctest/doctest.h>

using namespace platform;
namespace process = scripted::process;

namespace {

constexpr const char* product = "com.zerkolin.brevane";
constexpr const char* backup = "com.apple.TimeMachine";
constexpr const char* backupd = "/System/Library/CoreServices/backupd.bundle/Contents/Resources/backupd";

} // namespace

TEST_CASE("the log tool is run with exactly the arguments that select the product and the backup daemon")
{
    ConsoleFixture fixture;
    setToolOutput("[]");
    fetchedLog();
    REQUIRE(process::starts().size() == 1);
    const auto start = process::starts().front();
    CHECK(start.path == systemPath("/usr/bin/log"));
    CHECK(start.arguments
          == std::vector<std::string>{"show", "--debug", "--info", "--predicate",
                                      "(subsystem == \"com.zerkolin.brevane\") || ((subsystem == "
                                      "\"com.apple.TimeMachine\") && (processImagePath endswith \"backupd\"))",
                                      "--style", "json"});
}

TEST_CASE("the output is read in chunks of 2048 bytes, closed, and the tool waited for")
{
    ConsoleFixture fixture;
    setToolOutput("[" + record(product, "Default", std::string(9000, 'x')) + "]");
    const auto text = fetchedLog();
    CHECK(process::greatestRead() == 2048);
    CHECK(process::waitedFor() == 1);
    CHECK(process::unclosedWaits() == 0);
    CHECK(text.string().find(std::string(9000, 'x')) != std::string::npos);
}

TEST_CASE("a pipe or a process that cannot be made gives an empty text and no word in the log")
{
    ConsoleFixture fixture;
    for (const int failure : {EMFILE, EAGAIN, ENOMEM}) {
        process::failToStart(failure);
        CHECK(fetchedLog().empty());
    }
    CHECK(loggedErrors().empty());
}

TEST_CASE("a tool that prints nothing gives an empty text and one error in the log")
{
    ConsoleFixture fixture;
    process::setExitStatus(1);
    CHECK(fetchedLog().empty());
    REQUIRE(loggedErrors().size() == 1);
    CHECK(loggedErrors().front().starts_with("Failed to read logs. "));
    CHECK(loggedErrors().front().size() > std::string("Failed to read logs. ").size());
}

TEST_CASE("output that is not one valid JSON array gives an empty text and an error in the log")
{
    const auto good = record(product, "Default", "message");
    for (const auto& output :
         {std::string("nonsense"), std::string("{}"), std::string("null"), "[" + good, "[" + good + ",]",
          "[" + good + "}", "[" + good + "] x", "[" + good + "][]", std::string("[,]"), "[" + good + good + "]",
          std::string("[1 2]"), "[" + record(product, "Default", "caf\xE9") + "]",
          "[" + record(product, "Default", "\\ud800") + "]", "[" + record(product, "Default", "a\nb") + "]",
          std::string("[{\"a\":tru}]"), std::string("[01]"), std::string("[{\"unread\":\"\\x\"}]"), std::string("   "),
          "[" + std::string(2000, '[') + std::string(2001, ']')}) {
        ConsoleFixture fixture;
        CAPTURE(output.substr(0, 100));
        setToolOutput(output);
        CHECK(fetchedLog().empty());
        CHECK(loggedErrors().size() == 1);
    }
}

TEST_CASE("an array without elements, with space around it, gives an empty text and no error")
{
    for (const char* const output : {"[]", " \n[ ]\r\n\t", "[\n]\n"}) {
        ConsoleFixture fixture;
        setToolOutput(output);
        CHECK(fetchedLog().empty());
        CHECK(loggedErrors().empty());
    }
}

TEST_CASE("a line reads date, sender and message, each in its colour and the fixed-pitch font")
{
    ConsoleFixture fixture;
    setToolOutput("[" + record(product, "Default", "Running version 1.") + ","
                  + record(product, "Debug", "stored", "/Library/Brevane/com.zerkolin.brevane.scheduler") + ","
                  + record(backup, "Error", "failed", backupd) + "," + record(backup, "Info", "running", backupd) + ","
                  + record(backup, "Fault", "worse", backupd) + "," + record(backup, "error", "lower case", backupd)
                  + "]");
    const auto text = fetchedLog();
    const std::string date = "p[11/20/26, 9:56:22\u202FAM ]";
    const std::string plainDate = "11/20/26, 9:56:22\u202FAM ";
    // Neighbours in the same style are one stretch.
    CHECK(styled(text)
          == date + "b[brevane]g[ Running version 1.\n]" + date + "b[Brevane\u00A0Scheduler]o[ stored\n]" + date
              + "b[Time Machine]r[ failed\n]" + date + "b[Time Machine]p[ running\n" + plainDate
              + "]b[Time Machine]p[ worse\n" + plainDate + "]b[Time Machine]p[ lower case\n]");
    text.visitRuns(0, text.size(), [](std::size_t, std::size_t, const TextAttributes& attributes) {
        CHECK(attributes.font == TextFont::UserFixedPitch);
    });
}

TEST_CASE("from 10.14 on the colours are the system's, before they are fixed")
{
    ConsoleFixture fixture;
    scripted::system::setOperatingSystemVersion({10, 14, 0});
    CHECK(BRVConsoleController::blueColor() == Color(NamedColor::SystemBlue));
    CHECK(BRVConsoleController::greenColor() == Color(NamedColor::SystemGreen));
    CHECK(BRVConsoleController::orangeColor() == Color(NamedColor::SystemOrange));
    CHECK(BRVConsoleController::redColor() == Color(NamedColor::SystemRed));
    scripted::system::setOperatingSystemVersion({10, 13, 6});
    CHECK(BRVConsoleController::blueColor() == Color(FixedColor{0, 0, 1, 1}));
    CHECK(BRVConsoleController::greenColor() == Color(FixedColor{0, 0.58, 0, 1}));
    CHECK(BRVConsoleController::orangeColor() == Color(FixedColor{0.81, 0.41, 0, 1}));
    CHECK(BRVConsoleController::redColor() == Color(FixedColor{0.96, 0, 0, 1}));
}

TEST_CASE("before 10.12 the backup daemon's old messages are shown, each run set apart, without styles")
{
    ConsoleFixture fixture;
    scripted::system::setOperatingSystemVersion({10, 11, 6});
    scripted::legacylog::setMessages("com.apple.backupd",
                                     {{"1763632582", "Starting automatic backup"},
                                      {"1763632583.7", "Copied 3 files"},
                                      {"1763632584", "Starting manual backup"},
                                      {"1763632585", "Starting manual backup now"},
                                      {"nonsense", "Starting automatic backup"},
                                      {std::nullopt, std::nullopt}});
    scripted::legacylog::setMessages("somebody", {{"1", "else"}});
    fixture.show();
    CHECK(fixture.string()
          == "11/20/25, 9:56:22\u202FAM: Starting automatic backup\n"
             "11/20/25, 9:56:23\u202FAM: Copied 3 files\n"
             "\n11/20/25, 9:56:24\u202FAM: Starting manual backup\n"
             "11/20/25, 9:56:25\u202FAM: Starting manual backup now\n"
             "\n1/1/70, 12:00:00\u202FAM: Starting automatic backup\n"
             "1/1/70, 12:00:00\u202FAM: (null)\n");
    CHECK(styled(*fixture.textView()->textStorage()) == "-[" + fixture.string() + "]");
    CHECK(process::starts().empty());
}

TEST_CASE("on an old system the text never starts with an empty line, even with the start of a backup")
{
    ConsoleFixture fixture;
    scripted::system::setOperatingSystemVersion({10, 11, 6});
    for (const char* const start : {"Starting automatic backup", "Starting manual backup"}) {
        scripted::legacylog::setMessages("com.apple.backupd", {{"1763632582", start}, {"1763632583", start}});
        const std::string line = std::string("11/20/25, 9:56:2%\u202FAM: ") + start + "\n";
        const auto at = [&line](char second) { return std::string(line).replace(line.find('%'), 1, 1, second); };
        CHECK(BRVConsoleController::fetchASL().string() == at('2') + "\n" + at('3'));
    }
}

TEST_CASE("without old messages the text is empty")
{
    ConsoleFixture fixture;
    scripted::system::setOperatingSystemVersion({10, 9, 5});
    fixture.show();
    CHECK(fixture.string().empty());
    CHECK(fixture.refreshButton()->isEnabled());
}
