#include "helper/enforcement/EnforcementState.h"
#include "platform/PropertyListCoding.h"
#include "tests/enforcement/EnforcedMachine.h"
#include "tests/platform/ScriptedBackups.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/support/FileContent.h"

#include <doctest/doctest.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using helper::EnforcementState;
using helper::Journal;
using helper::JournalEntry;
using platform::Dictionary;
using std::chrono::minutes;

namespace {

EnforcementState fullState()
{
    EnforcementState state;
    state.memory.since = 1'767'225'600;
    state.memory.settled = 1'767'225'700;
    state.memory.lastStart = 1'767'225'650;
    state.memory.lastEnd = 1'767'225'660;
    state.memory.lastSucceeded = 1'767'225'640;
    state.memory.owed = 1'767'225'600;
    state.memory.timeOfDay = 3'661;
    state.memory.failures = 3;
    state.record = EnforcedMachine::everyMinutes(5);
    state.zone = "Asia/Kathmandu";
    state.identifier = "2026-01-01T00-00-00-abcdef";
    state.program = "borg";
    state.durations = {10, 20};
    state.journal.add({.at = 1'767'225'650,
                       .event = "missed",
                       .due = 1'767'225'600,
                       .count = 7,
                       .reasons = {"battery", "running"},
                       .succeeded = {},
                       .text = "Missed 7 backups."});
    state.journal.add({.at = 1'767'225'660,
                       .event = "end",
                       .due = {},
                       .count = {},
                       .reasons = {},
                       .succeeded = false,
                       .text = "Failed."});
    return state;
}

bool isUsable(const char* key, std::optional<platform::PropertyList> value)
{
    auto dictionary = fullState().dictionary(1'767'225'800);
    if (value)
        dictionary.set(key, *value);
    else
        dictionary.remove(key);
    return EnforcementState::inDictionary(dictionary).has_value();
}

void overwrite(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::trunc) << content;
}

} // namespace

TEST_CASE("everything that is remembered comes back from its dictionary")
{
    const auto state = fullState();
    const auto bytes = platform::binaryPropertyList(state.dictionary(1'767'225'800));
    REQUIRE(bytes);
    const auto read = platform::propertyListWithData(*bytes);
    REQUIRE(read);
    CHECK(EnforcementState::inDictionary(*read->dictionary()) == state);
}

TEST_CASE("what is remembered is refused when a value is missing, of another type or out of range")
{
    CHECK(isUsable("LastStart", std::nullopt));
    CHECK(isUsable("TimeOfDay", 86'399));
    CHECK_FALSE(isUsable("TimeOfDay", 86'400));
    CHECK_FALSE(isUsable("TimeOfDay", -1));
    CHECK_FALSE(isUsable("TimeOfDay", "noon"));
    CHECK_FALSE(isUsable("Failures", -1));
    CHECK_FALSE(isUsable("LastEnd", 5));
    CHECK_FALSE(isUsable("LastEnd", platform::Date{1e18}));
    CHECK_FALSE(isUsable("Journal", platform::Array{"no entry"}));
    for (const auto* key : {"Since", "Settled", "Written", "Record", "Journal"})
        CHECK_FALSE(isUsable(key, std::nullopt));
}

TEST_CASE("the journal keeps the last 500 entries, newest first")
{
    Journal journal;
    for (int number = 0; number < 600; ++number)
        journal.add(
            {.at = number, .event = "start", .due = {}, .count = {}, .reasons = {}, .succeeded = {}, .text = ""});
    CHECK(journal.entries().size() == 500);
    CHECK(journal.entries().front().at == 599);
    CHECK(journal.entries().back().at == 100);
    CHECK(Journal::inArray(journal.array()) == journal);
}

TEST_CASE("the start of a backup is on disk before its program runs, and its end afterwards")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    std::optional<Dictionary> stored;
    std::string identifier;
    scripted::backups::setStartObserver([&](const platform::BackupJob& job) {
        stored = machine.stored();
        identifier = job.identifier;
    });
    machine.advance(minutes(5));
    REQUIRE(stored);
    CHECK(stored->contains("LastStart"));
    CHECK_FALSE(stored->contains("LastEnd"));
    CHECK(*stored->stringForKey("Identifier") == identifier);
    CHECK(stored->arrayForKey("Journal")->size() == 1);
    machine.endBackup(0);
    stored = machine.stored();
    REQUIRE(stored);
    CHECK(stored->contains("LastEnd"));
    CHECK(stored->contains("LastSucceeded"));
}

TEST_CASE("the journal is kept over restarts")
{
    const auto settings = EnforcedMachine::everyMinutes(5);
    EnforcedMachine machine(settings);
    machine.advance(minutes(5));
    machine.endBackup(0);
    machine.kill();
    machine.begin(settings);
    CHECK(machine.told().size() == 2);
}

TEST_CASE("a damaged file is kept under another name, and backups begin anew")
{
    const auto settings = EnforcedMachine::everyMinutes(5);
    EnforcedMachine machine(settings);
    machine.advance(minutes(5));
    machine.endBackup(0);
    machine.kill();
    overwrite(machine.statePath(), "nonsense");
    scripted::system::addFile(machine.statePath());
    machine.begin(settings);
    CHECK(contentOfFile(machine.statePath() + ".damaged") == "nonsense");
    CHECK(machine.told().empty());
    CHECK_FALSE(machine.status().contains("LastStart"));
    machine.advance(minutes(5));
    CHECK(machine.starts() == 2);
    CHECK(machine.stored());
}

TEST_CASE("a backup starts although nothing can be written down, and that is made up for as soon as it can")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    const auto folder = machine.statePath().substr(0, machine.statePath().rfind('/'));
    REQUIRE(std::rename(folder.c_str(), (folder + "-away").c_str()) == 0);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 1);
    CHECK_FALSE(machine.stored());
    REQUIRE(std::rename((folder + "-away").c_str(), folder.c_str()) == 0);
    machine.endBackup(0);
    REQUIRE(machine.stored());
    CHECK(machine.stored()->contains("LastEnd"));
}

TEST_CASE("looking at the status writes nothing")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    REQUIRE(::unlink(machine.statePath().c_str()) == 0);
    machine.status();
    machine.advance(minutes(1));
    CHECK_FALSE(machine.stored());
}
