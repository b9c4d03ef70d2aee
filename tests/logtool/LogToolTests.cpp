#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* both = "(subsystem == \"com.zerkolin.brevane\") || "
                             "((subsystem == \"com.apple.TimeMachine\") && (processImagePath endswith \"backupd\"))";

struct Outcome {
    std::string output;
    int status = 0;
};

// A sandbox's root with a store.
struct Store {
    explicit Store(const std::string& content) { folder.write("var/log/system.jsonl", content); }
    Store() = default;

    Outcome run(std::vector<std::string> arguments, const char* redirection = "2>&1") const
    {
        std::vector<std::string> command = {"sh", "-c", std::string("exec \"$@\" ") + redirection, "sh", LOG_TOOL};
        command.insert(command.end(), arguments.begin(), arguments.end());
        ChildProcess tool(command, {{"BREVANE_ROOT", folder.path()}, {"TZ", "UTC"}});
        Outcome outcome;
        outcome.output = tool.readAll();
        outcome.status = tool.wait();
        return outcome;
    }

    TemporaryDirectory folder;
};

std::string line(const char* subsystem, const char* type, const char* message, const char* path = "/x/brevane")
{
    return std::string(R"({"timestamp":"2026-11-20 09:56:22.123456+0000","messageType":")") + type
        + R"(","subsystem":")" + subsystem + R"(","category":"c","eventMessage":")" + message
        + R"(","processImagePath":")" + path + R"(","processID":42})" + "\n";
}

std::string printed(const char* subsystem, const char* type, const char* message, const char* path = "/x/brevane")
{
    return std::string(R"({"timestamp":"2026-11-20 09:56:22.123456+0000","subsystem":")") + subsystem
        + R"(","category":"c","eventMessage":")" + message + R"(","messageType":")" + type + R"(","processImagePath":")"
        + path + R"(","processID":42})";
}

const std::vector<std::string> everything = {"show", "--debug", "--info", "--style", "json"};

} // namespace

TEST_CASE("the store's messages are printed as one array, in order")
{
    const Store store(line("a", "Default", "one") + line("b", "Error", "two \\\"x\\\" \\u0001 \\u00e9"));
    const auto [output, status] = store.run(everything);
    CHECK(status == 0);
    CHECK(output
          == "[" + printed("a", "Default", "one") + ",\n" + printed("b", "Error", "two \\\"x\\\" \\u0001 \u00e9")
              + "]\n");
}

TEST_CASE("with the console's predicate only its messages are printed")
{
    const Store store(line("com.zerkolin.brevane", "Default", "one")
                      + line("com.apple.TimeMachine", "Default", "two", "/x/backupd")
                      + line("com.apple.TimeMachine", "Default", "three", "/x/other") + line("", "Default", "four"));
    const auto [output, status] = store.run({"show", "--predicate", both, "--style", "json"});
    CHECK(status == 0);
    CHECK(output
          == "[" + printed("com.zerkolin.brevane", "Default", "one") + ",\n"
              + printed("com.apple.TimeMachine", "Default", "two", "/x/backupd") + "]\n");
}

TEST_CASE("info and debug messages are printed when they are asked for")
{
    const Store store(line("a", "Info", "i") + line("a", "Debug", "d") + line("a", "Fault", "f"));
    CHECK(store.run({"show"}).output == "[" + printed("a", "Fault", "f") + "]\n");
    CHECK(store.run({"show", "--info"}).output
          == "[" + printed("a", "Info", "i") + ",\n" + printed("a", "Fault", "f") + "]\n");
    CHECK(store.run({"show", "--debug"}).output
          == "[" + printed("a", "Debug", "d") + ",\n" + printed("a", "Fault", "f") + "]\n");
}

TEST_CASE("one object a line can be had, too")
{
    const Store store(line("a", "Default", "one") + line("a", "Default", "two"));
    CHECK(store.run({"show", "--style", "ndjson"}).output
          == printed("a", "Default", "one") + "\n" + printed("a", "Default", "two") + "\n");
}

TEST_CASE("a store that is not there, or empty, is an empty array")
{
    CHECK(Store().run(everything).output == "[]\n");
    CHECK(Store().run(everything).status == 0);
    CHECK(Store("").run(everything).output == "[]\n");
}

TEST_CASE("damaged lines are passed over, and one that is still being written")
{
    const Store store("garbage\n" + line("a", "Default", "one") + "{\"timestamp\":\n\n[1]\n\xff\n"
                      + line("a", "Default", "two") + "{\"timestamp\":\"2026");
    const auto [output, status] = store.run(everything);
    CHECK(status == 0);
    CHECK(output.find("\"one\"") != std::string::npos);
    CHECK(output.find("\"two\"") != std::string::npos);
    CHECK(output.find("garbage") == std::string::npos);
}

TEST_CASE("a wrong predicate or option is told on the standard error, with status 64 and no output")
{
    const Store store(line("a", "Default", "one"));
    const auto told = store.run({"show", "--predicate", "subsystem = 'a'"});
    CHECK(told.status == 64);
    CHECK(told.output.starts_with("log: bad predicate: '=' at column 11 has no meaning\nusage: log show "));
    CHECK(store.run({"show", "--colour"}).status == 64);
    CHECK(store.run({}).status == 64);
    CHECK(store.run({"show", "--colour"}, "2>/dev/null").output.empty());
    CHECK(store.run({"--help"}, "2>/dev/null").output.starts_with("usage: log show "));
    CHECK(store.run({"help"}).status == 0);
}

TEST_CASE("a full disk and a store that cannot be read are told with status 74")
{
    const Store store(line("a", "Default", "one"));
    if (::access("/dev/full", W_OK) == 0)
        CHECK(store.run(everything, ">/dev/full 2>/dev/null").status == 74);
    const Store unreadable;
    unreadable.folder.write("var/log/system.jsonl/folder", "");
    const auto told = unreadable.run(everything);
    CHECK(told.status == 74);
    CHECK(told.output == "log: the log cannot be read: Is a directory\n"); // and no part of an array
}

namespace {

bool canHavePrivateJournal()
{
    return ::geteuid() == 0 && ::access("/usr/lib/systemd/systemd-journald", X_OK) == 0
        && ChildProcess({"unshare", "--mount", "--propagation", "private", "mount", "-t", "tmpfs", "tmpfs", "/run"})
               .wait()
        == 0;
}

ChildProcess runWithPrivateJournal(std::vector<std::string> command)
{
    command.insert(command.begin(), {"unshare", "--mount", "--propagation", "private", JOURNAL_SCRIPT, JOURNAL_PROBE});
    return ChildProcess(command, {{"BREVANE_ROOT", "/opt/brevane"}});
}

} // namespace

TEST_CASE("a journal of which this user may read no file is told with status 74 and no output")
{
    if (!canHavePrivateJournal()) {
        MESSAGE("SKIPPED: a private journal needs root and systemd-journald");
        return;
    }
    // The persistent files of this machine are out of sight, and so is the folder that the tool stands in.
    auto run = runWithPrivateJournal(
        {"sh", "-c",
         "cp \"$0\" /run/log-tool && chmod 755 /run/log-tool || exit 1\n"
         "[ ! -e /var/log/journal ] || mount -t tmpfs tmpfs /var/log/journal\n"
         "setpriv --reuid 65534 --regid 65534 --clear-groups /run/log-tool show --style json > /run/output 2> "
         "/run/told\n"
         "echo \"$?\"; wc -c < /run/output; cat /run/told",
         LOG_TOOL});
    CHECK(run.readAll() == "74\n0\nlog: the log cannot be read: the journal has no file that this user may read\n");
}

TEST_CASE("the system's journal is read like the store")
{
    if (!canHavePrivateJournal()) {
        MESSAGE("SKIPPED: a private journal needs root and systemd-journald");
        return;
    }
    auto run = runWithPrivateJournal({LOG_TOOL, "show", "--debug", "--info", "--predicate", both, "--style", "json"});
    const auto output = run.readAll();
    CHECK(run.wait() == 0);
    CAPTURE(output);
    CHECK(output.starts_with("[{\"timestamp\":\""));
    CHECK(output.ends_with("}]\n"));
    for (const char* const part :
         {R"("eventMessage":"a default","messageType":"Default")", R"("eventMessage":"an info","messageType":"Info")",
          R"("eventMessage":"a debug","messageType":"Debug")", R"("eventMessage":"an error","messageType":"Error")",
          R"("eventMessage":"a fault","messageType":"Fault")",
          R"("subsystem":"com.zerkolin.brevane","category":"probe")"})
        CHECK(output.find(part) != std::string::npos);
    CHECK(output.find("journal_probe\",\"processID\":") != std::string::npos);
    CHECK(output.find("a report") == std::string::npos);
    CHECK(output.find("a legacy error") == std::string::npos);
}
