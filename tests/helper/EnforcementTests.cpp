#include "platform/linux/system/backups/BackupRecord.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleRanges.h"
#include "protocol/ScheduleSettings.h"
#include "tests/helper/RunningHelper.h"
#include "tests/helper/SettingsRecords.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <doctest/doctest.h>
#include <functional>
#include <sys/stat.h>
#include <sysexits.h>
#include <thread>
#include <unistd.h>

using platform::Dictionary;
using Answer = PolkitAuthority::Answer;

namespace {

constexpr const char* borg = "/usr/bin/borg";

bool hasBorg()
{
    if (::access(borg, X_OK) == 0)
        return true;
    MESSAGE("SKIPPED: borg is not installed");
    return false;
}

Dictionary statusOf(RunningHelper& helper)
{
    return *resultIn(helper.send({{"message", BRVMessageGetStatus}})).dictionary();
}

platform::ServiceReply change(RunningHelper& helper, std::int64_t message, const platform::PropertyList& payload)
{
    return helper.send({{"message", message}, {"auth", ownToken()}, {"payload", binaryData(payload)}});
}

platform::ServiceReply startBackup(RunningHelper& helper)
{
    return helper.send({{"message", BRVMessageStartBackup}, {"auth", ownToken()}});
}

Dictionary borgChoice(const RunningHelper& helper)
{
    const auto folder = helper.root() + "/data";
    ::mkdir(folder.c_str(), 0755);
    return {{BackupProgramKey::Program, "borg"},
            {BackupProgramKey::Fields,
             Dictionary{{"Folders", platform::Array{folder}}, {"Repository", helper.root() + "/repository"}}}};
}

bool waitUntil(std::chrono::seconds limit, const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

std::string archivesOf(const RunningHelper& helper)
{
    ChildProcess list(
        {borg, "list", "--short", helper.root() + "/repository"},
        {{"BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK", "yes"}, {"BORG_BASE_DIR", helper.root() + "/borg"}});
    return list.readAll();
}

} // namespace

TEST_CASE("a fresh helper says that backups are off, to anybody who asks")
{
    RunningHelper helper(Answer::Challenge);
    const auto status = statusOf(helper);
    CHECK(*status.stringForKey("State") == "off");
    CHECK(status.find("Now")->date());
    CHECK(status.stringForKey("Zone"));
    CHECK(status.integerForKey("Failures") == 0);
    CHECK(status.arrayForKey("Reasons")->empty());
    CHECK(status.arrayForKey("Journal")->empty());
    CHECK(status.arrayForKey("Upcoming"));
    for (const auto* key : {"Due", "LastStart", "LastEnd", "LastSucceeded", "Program"})
        CHECK_FALSE(status.contains(key));
}

TEST_CASE("a backup that is handed no job, or another one's, backs nothing up")
{
    const TemporaryDirectory root;
    const auto marker = root.file("made");
    const auto run = [&](const char* identifier, const std::string& input) {
        ChildProcess backup({BREVANE_BACKUP_DAEMON, "--root", root.path(), "--identifier", identifier});
        backup.write(input);
        backup.closeInput();
        return backup.wait();
    };
    const auto bytes = platform::encodedBackupJob(
        {.identifier = "a-1", .commands = {{"/bin/touch", marker}}, .environment = {}, .overdueAfter = {}});
    const std::string job(bytes.begin(), bytes.end());
    CHECK(run("a-1", "") == EX_CONFIG);
    CHECK(run("a-1", "no job") == EX_CONFIG);
    CHECK(run("a-1", job.substr(0, job.size() / 2)) == EX_CONFIG);
    CHECK(run("a-2", job) == EX_CONFIG);
    CHECK_FALSE(platform::fileExists(marker));
    CHECK(run("a-1", job) == 0);
    CHECK(platform::fileExists(marker));
}

TEST_CASE("a program that first writes a single byte is read on")
{
    const TemporaryDirectory root;
    const auto marker = root.file("made");
    // More than a pipe holds: who is not read on never comes to its end.
    const auto bytes = platform::encodedBackupJob(
        {.identifier = "a-1",
         .commands = {{"/bin/sh", "-c",
                       "printf a; sleep 0.3; head -c 300000 /dev/zero | tr '\\0' b; exec touch " + marker}},
         .environment = {},
         .overdueAfter = {}});
    ChildProcess backup({"timeout", "20", BREVANE_BACKUP_DAEMON, "--root", root.path(), "--identifier", "a-1"});
    backup.write({bytes.begin(), bytes.end()});
    backup.closeInput();
    CHECK(backup.wait() == 0);
    CHECK(platform::fileExists(marker));
}

TEST_CASE("who may not change settings can neither start a backup nor choose its program")
{
    RunningHelper helper(Answer::Challenge);
    for (const auto message : {BRVMessageStartBackup, BRVMessageSetBackupProgram}) {
        const auto without = errorIn(helper.send({{"message", message}}));
        CHECK(without.domain == ZRKMessagerErrorDomain);
        CHECK(without.code == ZRKMessagerErrorMissingAuthorization);
        CHECK(errorIn(change(helper, message, borgChoice(helper))).domain != BRVErrorDomain);
    }
    CHECK(statusOf(helper).arrayForKey("Journal")->empty());
}

TEST_CASE("without a program no backup is started by hand, and the value that is missing is named")
{
    RunningHelper helper(Answer::Authorized);
    const auto refused = errorIn(startBackup(helper));
    CHECK(refused.domain == BRVErrorDomain);
    CHECK(refused.code == BRVErrorMissingValue);
}

TEST_CASE("the chosen program is stored and served with what can be chosen, and a bad choice is refused")
{
    RunningHelper helper(Answer::Authorized);
    const auto program = [&] { return *resultIn(helper.send({{"message", BRVMessageGetBackupProgram}})).dictionary(); };
    CHECK_FALSE(program().contains(BackupProgramKey::Program));
    CHECK(program().arrayForKey(BackupProgramKey::Programs)->size() >= 8);

    auto choice = borgChoice(helper);
    REQUIRE(resultIn(change(helper, BRVMessageSetBackupProgram, choice)).dictionary());
    helper.program().kill();
    helper.start();
    CHECK(*program().stringForKey(BackupProgramKey::Program) == "borg");
    CHECK(*program().dictionaryForKey(BackupProgramKey::Fields) == *choice.dictionaryForKey(BackupProgramKey::Fields));

    choice.set(BackupProgramKey::Fields, Dictionary{{"Folders", platform::Array{"--help"}}});
    CHECK(errorIn(change(helper, BRVMessageSetBackupProgram, choice)).domain == BRVErrorDomain);
    CHECK(errorIn(change(helper, BRVMessageSetBackupProgram, "borg")).domain == ZRKMessagerErrorDomain);
    CHECK(*program().stringForKey(BackupProgramKey::Program) == "borg");
}

TEST_CASE("with the program it is told that no schedule was ever applied, until one is, whatever it says")
{
    RunningHelper helper(Answer::Authorized);
    const auto isTold = [&] {
        const auto reply = resultIn(helper.send({{"message", BRVMessageGetBackupProgram}}));
        return reply.dictionary()->find(BackupProgramKey::NeverApplied) != nullptr;
    };
    CHECK(isTold());
    helper.program().kill();
    helper.start();
    CHECK(isTold());
    REQUIRE(resultIn(change(helper, BRVMessageApplySettings, defaultScheduleSettings())).dictionary());
    CHECK_FALSE(isTold());
    helper.program().kill();
    helper.start();
    CHECK_FALSE(isTold());
}

TEST_CASE("within 90 seconds of an apply of every minute there is a real archive, and the journal tells it")
{
    if (!hasBorg())
        return;
    RunningHelper helper(Answer::Authorized);
    REQUIRE(resultIn(change(helper, BRVMessageSetBackupProgram, borgChoice(helper))).dictionary());
    auto settings = intervalSettings({{"Minutes", 1}});
    settings.set(ScheduleKey::Backups, true);
    settings.set(ScheduleKey::AllowBattery, true);
    REQUIRE(resultIn(change(helper, BRVMessageApplySettings, settings)).dictionary());
    CHECK(*statusOf(helper).stringForKey("State") == "waiting");
    CHECK(statusOf(helper).arrayForKey("Upcoming")->size() == 20);
    REQUIRE(waitUntil(std::chrono::seconds(90), [&] { return statusOf(helper).contains("LastSucceeded"); }));
    const auto status = statusOf(helper);
    const auto& journal = *status.arrayForKey("Journal");
    REQUIRE(journal.size() == 2);
    CHECK(*journal[0].dictionary()->stringForKey("Event") == "end");
    CHECK(journal[0].dictionary()->boolForKey("Succeeded"));
    CHECK(*journal[1].dictionary()->stringForKey("Event") == "start");
    CHECK_FALSE(archivesOf(helper).empty());
    CHECK(helper.log().contains("Started the backup of "));
    CHECK(helper.log().contains("The backup succeeded; it took "));
}

TEST_CASE("a helper that is killed during a backup finds it again, and it succeeds once")
{
    if (!hasBorg())
        return;
    RunningHelper helper(Answer::Authorized);
    REQUIRE(resultIn(change(helper, BRVMessageSetBackupProgram, borgChoice(helper))).dictionary());
    REQUIRE(resultIn(startBackup(helper)).dictionary());
    CHECK(errorIn(startBackup(helper)).code == BRVErrorBackupRunning);
    helper.program().kill();
    helper.start();
    REQUIRE(waitUntil(std::chrono::seconds(60), [&] { return *statusOf(helper).stringForKey("State") != "running"; }));
    const auto status = statusOf(helper);
    CHECK(status.contains("LastSucceeded"));
    CHECK(status.arrayForKey("Journal")->size() == 2);
    const auto archives = archivesOf(helper);
    CHECK(std::ranges::count(archives, '\n') == 1);
}
