#include "platform/linux/logtool/LogOptions.h"
#include "platform/linux/logtool/Predicate.h"

#include <doctest/doctest.h>

using namespace logtool;

namespace {

LogRecord recordOf(const char* subsystem, const char* path, const char* type = "Default")
{
    LogRecord record;
    record[Field::Subsystem] = subsystem;
    record[Field::ProcessImagePath] = path;
    record[Field::MessageType] = type;
    record[Field::EventMessage] = "say \"hello\" \\";
    return record;
}

bool matches(const char* text, const LogRecord& record)
{
    const auto predicate = Predicate::parse(text);
    CAPTURE(text);
    REQUIRE(predicate);
    return predicate->matches(record);
}

std::string failureOf(const std::string& text)
{
    const auto predicate = Predicate::parse(text);
    return predicate ? "" : predicate.error();
}

constexpr const char* consoles =
    "(subsystem == \"com.zerkolin.brevane\") || "
    "((subsystem == \"com.apple.TimeMachine\") && (processImagePath endswith \"backupd\"))";

} // namespace

TEST_CASE("the console's predicate selects the product and the backup daemon alone")
{
    CHECK(matches(consoles, recordOf("com.zerkolin.brevane", "/anything")));
    CHECK(matches(consoles, recordOf("com.apple.TimeMachine", "/usr/libexec/backupd")));
    CHECK_FALSE(matches(consoles, recordOf("com.apple.TimeMachine", "/usr/bin/tmutil")));
    CHECK_FALSE(matches(consoles, recordOf("com.apple.timemachine", "/usr/libexec/backupd")));
    CHECK_FALSE(matches(consoles, recordOf("", "/usr/libexec/backupd")));
    CHECK(Predicate::parse(consoles)->subsystems()
          == std::vector<std::string>{"com.zerkolin.brevane", "com.apple.TimeMachine"});
}

TEST_CASE("and binds closer than or, and brackets closer than both")
{
    const auto record = recordOf("a", "p");
    CHECK(matches("subsystem == 'a' || subsystem == 'b' && subsystem == 'c'", record));
    CHECK_FALSE(matches("(subsystem == 'a' || subsystem == 'b') && subsystem == 'c'", record));
    CHECK(matches("subsystem == 'b' && subsystem == 'c' || subsystem == 'a'", record));
    CHECK(matches("((subsystem == 'a'))", record));
    CHECK(matches("subsystem=='a'&&processImagePath=='p'", record));
    CHECK(matches("subsystem == 'a' AND processImagePath ENDSWITH 'p' or subsystem == 'x'", record));
}

TEST_CASE("texts stand in either quotation mark and may have escaped characters")
{
    const auto record = recordOf("a", "p");
    CHECK(matches("eventMessage == \"say \\\"hello\\\" \\\\\"", record));
    CHECK(matches("eventMessage == 'say \"hello\" \\\\'", record));
    CHECK(matches("category == ''", record));
    CHECK(matches("processImagePath endswith ''", record));
    CHECK_FALSE(matches("processImagePath endswith 'pp'", record));
}

TEST_CASE("a wrong predicate is told with what is wrong and where")
{
    CHECK(failureOf("") == "expected a key or '(' at column 1");
    CHECK(failureOf("subsystem") == "expected '==' or 'endswith' at column 10");
    CHECK(failureOf("subsystem == ") == "expected a text in quotation marks at column 14");
    CHECK(failureOf("subsystem == 5") == "'5' at column 14 has no meaning");
    CHECK(failureOf("subsystem = 'a'") == "'=' at column 11 has no meaning");
    CHECK(failureOf("subsystem != 'a'") == "'!' at column 11 has no meaning");
    CHECK(failureOf("subsystem contains 'a'") == "expected '==' or 'endswith' at column 11");
    CHECK(failureOf("Subsystem == 'a'") == "there is no key 'Subsystem' at column 1");
    CHECK(failureOf("subsystem == 'a' &&") == "expected a key or '(' at column 20");
    CHECK(failureOf("subsystem == 'a' || && ") == "expected a key or '(' at column 21");
    CHECK(failureOf("(subsystem == 'a'") == "expected ')' at column 18");
    CHECK(failureOf("subsystem == 'a')") == "expected '&&', '||' or the end at column 17");
    CHECK(failureOf("subsystem == 'a' subsystem == 'b'") == "expected '&&', '||' or the end at column 18");
    CHECK(failureOf("subsystem == 'a") == "the text at column 14 has no closing quotation mark");
    CHECK(failureOf("subsystem == 'a\\") == "the text at column 14 has no closing quotation mark");
    CHECK(failureOf("subsystem == \u00e9") == "'\u00e9' at column 14 has no meaning");
    CHECK(failureOf("subsystem == \xE9") == "'\uFFFD' at column 14 has no meaning");
    CHECK(failureOf("()") == "expected a key or '(' at column 2");
    CHECK(failureOf("subsystem == 'a' & subsystem == 'b'") == "'&' at column 18 has no meaning");
    CHECK(failureOf(std::string(100000, '(')) == "it is too long");
    CHECK(failureOf(std::string(5000, '(')).starts_with("too many brackets inside each other"));
}

TEST_CASE("a long chain of comparisons is taken")
{
    std::string chain = "subsystem == 'a'";
    for (int count = 0; count < 2000; ++count)
        chain += " || subsystem == 'b'";
    CHECK(matches(chain.c_str(), recordOf("a", "")));
    CHECK(matches(chain.c_str(), recordOf("b", "")));
    CHECK_FALSE(matches(chain.c_str(), recordOf("c", "")));
}

TEST_CASE("only subsystems that must be there narrow the search")
{
    const auto subsystems = [](const char* text) { return Predicate::parse(text)->subsystems(); };
    using Names = std::vector<std::string>;
    CHECK(subsystems("subsystem == 'a'") == Names{"a"});
    CHECK(subsystems("subsystem == 'a' || category == 'b'").empty());
    CHECK(subsystems("category == 'b' && subsystem == 'a'") == Names{"a"});
    CHECK(subsystems("subsystem endswith 'a'").empty());
    CHECK(subsystems("subsystem == ''").empty());
    CHECK(Predicate().subsystems().empty());
}

TEST_CASE("options are taken with their values in either form")
{
    const auto options = LogOptions::parse({"show", "--debug", "--predicate=subsystem == 'a'", "--style", "json"});
    REQUIRE(options);
    CHECK(options->includesDebug);
    CHECK_FALSE(options->includesInfo);
    CHECK(options->style == Style::Json);
    CHECK(options->wants(recordOf("a", "", "Debug")));
    CHECK_FALSE(options->wants(recordOf("a", "", "Info")));
    CHECK_FALSE(options->wants(recordOf("b", "", "Default")));
    CHECK(LogOptions::parse({"--help"})->asksForHelp);
}

TEST_CASE("wrong options are told")
{
    const auto failure = [](const std::vector<std::string>& arguments) {
        const auto options = LogOptions::parse(arguments);
        return options ? std::string() : options.error();
    };
    CHECK(failure({}) == "a command is missing");
    CHECK(failure({"stream"}) == "there is no command 'stream'");
    CHECK(failure({"show", "--last", "1h"}) == "there is no option '--last'");
    CHECK(failure({"show", "file"}) == "there is no option 'file'");
    CHECK(failure({"show", "--predicate"}) == "the option --predicate needs a value");
    CHECK(failure({"show", "--predicate", "x"}) == "bad predicate: there is no key 'x' at column 1");
    CHECK(failure({"show", "--style", "syslog"}) == "there is no style 'syslog'");
    CHECK(failure({"show", "--style="}) == "there is no style ''");
}
