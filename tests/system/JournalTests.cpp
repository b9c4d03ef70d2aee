#include "tests/support/ChildProcess.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

bool canHaveJournal()
{
    if (::geteuid() != 0 || ::access("/usr/lib/systemd/systemd-journald", X_OK) != 0)
        return false;
    ChildProcess probe({"unshare", "--mount", "--propagation", "private", "mount", "-t", "tmpfs", "tmpfs", "/run"});
    return probe.wait() == 0;
}

std::vector<std::string> journalOfProbe()
{
    ChildProcess run({"unshare", "--mount", "--propagation", "private", JOURNAL_SCRIPT, JOURNAL_PROBE});
    std::vector<std::string> entries;
    while (auto line = run.readLine(30000))
        entries.push_back(*line);
    CHECK(run.wait() == 0);
    return entries;
}

bool holds(const std::string& entry, const std::string& field, const std::string& value)
{
    return entry.find("\"" + field + "\":\"" + value + "\"") != std::string::npos;
}

// The entry with this message.
std::string entryOf(const std::vector<std::string>& entries, const std::string& message)
{
    auto found = std::ranges::find_if(entries, [&](const auto& entry) { return holds(entry, "MESSAGE", message); });
    return found == entries.end() ? "" : *found;
}

} // namespace

TEST_CASE("the journal keeps each message with its type, priority, subsystem and category")
{
    if (!canHaveJournal()) {
        MESSAGE("SKIPPED: a private journal needs root and systemd-journald");
        return;
    }
    const auto entries = journalOfProbe();
    REQUIRE(entries.size() == 9);

    struct Expected {
        const char* message;
        const char* type;
        const char* priority;
    };
    for (auto [message, type, priority] : {Expected{"a default", "Default", "5"},
                                           {"an info", "Info", "6"},
                                           {"a debug", "Debug", "7"},
                                           {"an error", "Error", "3"},
                                           {"a fault", "Fault", "2"},
                                           {"two\\nlines, caf\uFFFD", "Default", "5"}}) {
        const auto entry = entryOf(entries, message);
        CAPTURE(message);
        CAPTURE(entry);
        CHECK(holds(entry, "MESSAGE_TYPE", type));
        CHECK(holds(entry, "PRIORITY", priority));
        CHECK(holds(entry, "SUBSYSTEM", "com.zerkolin.brevane"));
        CHECK(holds(entry, "CATEGORY", "probe"));
        CHECK(holds(entry, "SYSLOG_IDENTIFIER", "journal_probe"));
    }

    for (auto [message, level, priority] :
         {Expected{"a legacy warning", "Warning", "4"}, {"a legacy error", "Error", "3"}}) {
        const auto entry = entryOf(entries, message);
        CAPTURE(entry);
        CHECK(holds(entry, "LEVEL", level));
        CHECK(holds(entry, "PRIORITY", priority));
        CHECK(holds(entry, "FACILITY", "com.zerkolin.brevane"));
        CHECK(holds(entry, "SENDER", "journal_probe"));
        CHECK(entry.find("\"TIME\":\"") != std::string::npos);
    }

    const auto report = entryOf(entries, "a report");
    CHECK(holds(report, "MESSAGE_TYPE", "Error"));
    CHECK(holds(report, "PRIORITY", "3"));
    CHECK(report.find("SUBSYSTEM") == std::string::npos);
}

TEST_CASE("a report about the log is in the journal once, also where standard error goes there too")
{
    if (!canHaveJournal()) {
        MESSAGE("SKIPPED: a private journal needs root and systemd-journald");
        return;
    }
    // A file in the place of the stream that systemd connects and names.
    ChildProcess run({"unshare", "--mount", "--propagation", "private", JOURNAL_SCRIPT, JOURNAL_PROBE, "sh", "-c",
                      "touch /run/stream /run/file\n"
                      "export JOURNAL_STREAM=\"$(stat -c %d:%i /run/stream)\"\n"
                      "\"$0\" 2> /run/stream; \"$0\" 2> /run/file\n"
                      "wc -c < /run/stream; cat /run/file",
                      JOURNAL_PROBE});
    CHECK(run.readAll() == "0\na report\n");
}
