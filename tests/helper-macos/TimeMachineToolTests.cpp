#include "helper/macos/commands/Command.h"
#include "helper/macos/timemachine/FullDiskAccess.h"
#include "helper/macos/timemachine/TimeMachineTool.h"
#include "tests/helper-macos/StandInTool.h"

#include <cerrno>
#include <doctest/doctest.h>

using helper::CommandEnd;
using helper::FullDiskAccess;
using helper::TimeMachineTool;
using Command = std::vector<std::string>;

namespace {

constexpr std::chrono::seconds enough{20};

std::string failureOf(const Command& command, std::chrono::milliseconds limit = enough)
{
    const auto end = helper::runCommand(command, limit);
    CHECK_FALSE(end.isSuccess());
    return helper::failureOfCommand(command, end);
}

} // namespace

TEST_CASE("a command's words and errors come together with its status")
{
    const auto end = helper::runCommand({"/bin/sh", "-c", "echo out; echo '$x \"y\"' >&2; exit 3"}, enough);
    CHECK(end.output == "out\n$x \"y\"\n");
    CHECK(end.status == 3);
    CHECK(end.wasInTime);
    CHECK_FALSE(end.isSuccess());
    CHECK(helper::runCommand({"/bin/echo", "$HOME; exit 1"}, enough).output == "$HOME; exit 1\n");
}

TEST_CASE("a command gets no input")
{
    CHECK(helper::runCommand({"/bin/cat"}, enough).isSuccess());
}

TEST_CASE("of a command's output the first megabyte is kept")
{
    const auto end = helper::runCommand({"/bin/sh", "-c", "head -c 3000000 /dev/zero; echo done >&2"}, enough);
    CHECK(end.isSuccess());
    CHECK(end.output.size() == std::size_t(1) << 20);
}

TEST_CASE("a failed command is told by its last words, or by how it ended")
{
    CHECK(failureOf({"/bin/sh", "-c", "echo first; echo 'sh: The disk is full.'; echo; exit 1"}) == "The disk is full");
    CHECK(failureOf({"/bin/sh", "-c", "exit 75"}) == "sh ended with status 75");
    CHECK(failureOf({"/bin/sh", "-c", "kill -9 $$"}) == "sh was ended by signal 9");
    CHECK(failureOf({"/nowhere/tool", "x"}) == "there is no program '/nowhere/tool'");
    CHECK(failureOf({"/etc", "x"}) == "'/etc' cannot be run");
    CHECK(failureOf({"/bin/sh", "-c", "head -c 1000 /dev/zero | tr '\\0' x; exit 1"}).size() == 300);
}

TEST_CASE("a command that takes too long is ended")
{
    const auto before = std::chrono::steady_clock::now();
    CHECK(failureOf({"/bin/sh", "-c", "echo some words; exec sleep 60"}, std::chrono::milliseconds(200))
          == "sh did not answer in time");
    CHECK(std::chrono::steady_clock::now() - before < std::chrono::seconds(30));
}

TEST_CASE("what is asked of Time Machine is asked by the verbs of its tool")
{
    const StandInTool standIn;
    const auto tool = standIn.tool();
    standIn.sayPhase("Copying");
    standIn.say("localsnapshot", "Created local snapshot with date: 2026-11-22-093000\n");
    standIn.say("listlocalsnapshots", "Snapshots for disk /:\ncom.apple.TimeMachine.2026-11-22-093000.local\n");

    CHECK(tool.isThere());
    CHECK(tool.start(tool.startCommand()));
    CHECK(tool.status()->phase == "Copying");
    CHECK(tool.makeSnapshot() == "2026-11-22-093000");
    CHECK(tool.snapshotDates() == Command{"2026-11-22-093000"});
    CHECK(tool.removeSnapshot("2026-11-22-093000"));
    CHECK(
        standIn.calls()
        == "startbackup --auto\nstatus\nlocalsnapshot\nlistlocalsnapshots /\ndeletelocalsnapshots 2026-11-22-093000\n");
}

TEST_CASE("the system's own tool is asked unless another one is named")
{
    CHECK(TimeMachineTool().startCommand() == Command{"/usr/bin/tmutil", "startbackup", "--auto"});
    const TimeMachineTool missing("/nowhere/tmutil");
    CHECK_FALSE(missing.isThere());
    CHECK(missing.status().error() == "there is no program '/nowhere/tmutil'");
}

TEST_CASE("nothing but a date reaches the command that removes snapshots")
{
    const StandInTool standIn;
    for (const char* const date : {"/", "", "/Volumes/Data", "2026-11-22", "2026-11-22-093000 /"})
        CHECK(standIn.tool().removeSnapshot(date).error() == "'" + std::string(date) + "' is no date of a snapshot");
    CHECK(standIn.calls().empty());
}

TEST_CASE("what Time Machine says of a failure is told")
{
    const StandInTool standIn;
    const auto tool = standIn.tool();
    standIn.complain("startbackup", "tmutil: No destinations are configured.\n", 1);
    CHECK(tool.start(tool.startCommand()).error() == "No destinations are configured");
    standIn.complain("localsnapshot", "Failed to create local snapshot: disk is not APFS\n", 73);
    CHECK(tool.makeSnapshot().error() == "Failed to create local snapshot: disk is not APFS");
    standIn.say("status", "some words");
    CHECK(tool.status().error() == "tmutil's answer is not understood");
}

TEST_CASE("a snapshot without a date is told as a failure")
{
    const StandInTool standIn;
    standIn.say("localsnapshot", "Done.\n");
    CHECK(standIn.tool().makeSnapshot().error() == "tmutil did not say which snapshot it has made");
}

TEST_CASE("missing Full Disk Access is told in words of ours")
{
    const StandInTool standIn;
    standIn.complain(
        "listlocalsnapshots",
        "tmutil: listlocalsnapshots requires Full Disk Access privileges.\nTo allow this operation, select "
        "Full Disk Access in the Privacy\ntab of the Security & Privacy preference pane, and add Terminal\n"
        "to the list of applications which are allowed Full Disk Access.\n",
        80);
    CHECK(
        standIn.tool().snapshotDates().error()
        == "the background scheduler has no Full Disk Access, which is given in the system's settings under Privacy & "
           "Security");
}

TEST_CASE("whether there is Full Disk Access is told by what opening the system's files comes to")
{
    const auto told = [](int first, int second) {
        return helper::fullDiskAccess({"first", "second"},
                                      [=](const std::string& file) { return file == "first" ? first : second; });
    };
    CHECK(told(0, 0) == FullDiskAccess::Granted);
    CHECK(told(ENOENT, 0) == FullDiskAccess::Granted);
    CHECK(told(EPERM, ENOENT) == FullDiskAccess::Missing);
    CHECK(told(0, EPERM) == FullDiskAccess::Missing);
    CHECK(told(ENOENT, ENOENT) == FullDiskAccess::Unknown);
    CHECK(told(EACCES, EIO) == FullDiskAccess::Unknown);
    CHECK(helper::fullDiskAccess() == FullDiskAccess::Unknown); // of this system
}
