#include "helper/enforcement/SnapshotKeeper.h"
#include "helper/macos/timemachine/SnapshotNames.h"
#include "helper/macos/timemachine/TimeMachinePrograms.h"
#include "helper/macos/timemachine/TimeMachineSnapshots.h"
#include "helper/update/AddressRules.h"
#include "platform/Clock.h"
#include "platform/PropertyListCoding.h"
#include "protocol/BackupProgram.h"
#include "tests/helper-macos/StandInTool.h"

#include <cerrno>
#include <doctest/doctest.h>

using helper::AddressRules;
using helper::TimeMachinePrograms;
using helper::TimeMachineSnapshots;

TEST_CASE("the system's own backup is the one program, and none can be chosen")
{
    const StandInTool standIn;
    TimeMachinePrograms programs(standIn.tool());
    CHECK(programs.isReady());
    CHECK(programs.name() == "Time Machine");
    CHECK(programs.job("one")->commands
          == std::vector<std::vector<std::string>>{{standIn.path(), "startbackup", "--auto"}});
    CHECK(programs.job("one")->identifier == "one");
    CHECK(programs.isSuccess("timemachine", 0));
    CHECK_FALSE(programs.isSuccess("timemachine", 1));
    CHECK_FALSE(programs.isSuccess("timemachine", {}));
    CHECK(programs.choose({}, false).error().code == ENOTSUP);
    CHECK(*programs.reply().stringForKey(BackupProgramKey::Program) == programs.identifier());
    CHECK(programs.reply().arrayForKey(BackupProgramKey::Programs)->empty());

    const TimeMachinePrograms missing(helper::TimeMachineTool("/nowhere/tmutil"));
    CHECK_FALSE(missing.isReady());
    CHECK(missing.job("one").error() == "Time Machine's tool is not there.");
}

TEST_CASE("missing Full Disk Access is told by a note")
{
    const StandInTool standIn;
    using helper::FullDiskAccess;
    CHECK(TimeMachinePrograms(standIn.tool(), FullDiskAccess::Granted).notes().empty());
    CHECK(TimeMachinePrograms(standIn.tool(), FullDiskAccess::Unknown).notes().empty());
    CHECK(TimeMachinePrograms(standIn.tool(), FullDiskAccess::Missing).notes()
          == std::vector<std::string>{helper::FullDiskAccessNotice});
    for (const char* const language : {"de", "en", "es", "fr", "it", "ja", "zh-Hans"}) {
        const auto table = contentOfFile(std::string(BREVANE_TABLES "/") + language + ".lproj/Localizable.strings");
        CHECK_MESSAGE(table.find(std::string("\"") + helper::FullDiskAccessNotice + "\" = \"") != std::string::npos,
                      language);
    }
}

TEST_CASE("a snapshot of Time Machine is its own only while it is there")
{
    const StandInTool standIn;
    TimeMachineSnapshots snapshots(standIn.tool());
    CHECK(snapshots.volumesOf({}) == std::vector<std::string>{"/"});
    standIn.say("localsnapshot", "Created local snapshot with date: 2026-11-22-093000\n");
    const auto made = snapshots.make("/");
    REQUIRE(made);
    CHECK(made->path == "2026-11-22-093000");
    CHECK(made->identifier == "com.apple.TimeMachine.2026-11-22-093000.local");

    CHECK_FALSE(snapshots.identifierOf(made->path));
    standIn.say("listlocalsnapshots", "com.apple.TimeMachine.2026-11-22-093000.local\n");
    CHECK(snapshots.identifierOf(made->path) == made->identifier);
    CHECK_FALSE(snapshots.identifierOf("2026-11-22-100000"));
    CHECK(snapshots.remove(made->path));
    CHECK(standIn.calls().ends_with("deletelocalsnapshots 2026-11-22-093000\n"));
    CHECK(snapshots.list("/").error().code == ENOTSUP);

    standIn.complain("listlocalsnapshots", "tmutil: Nobody knows.\n", 1);
    CHECK(snapshots.identifierOf(made->path) == made->identifier);
    CHECK_FALSE(snapshots.identifierOf("/"));
    standIn.complain("localsnapshot", "tmutil: The disk is full.\n", 1);
    CHECK(snapshots.make("/").error() == "The disk is full");
}

TEST_CASE("of the snapshots of Time Machine those go that the helper made, that are a day old and still there")
{
    const StandInTool standIn;
    const auto now = std::chrono::floor<std::chrono::seconds>(platform::readClocks().sinceEpoch).count();
    platform::Array kept;
    const auto keep = [&](const std::string& date, std::int64_t secondsAgo) {
        kept.emplace_back(helper::MadeSnapshot{"/", date, helper::nameOfSnapshot(date), now - secondsAgo}.dictionary());
    };
    keep("2026-11-20-090000", 200'000);
    keep("2026-11-20-100000", 190'000); // which the system has removed since
    keep("2026-11-21-120000", 80'000);
    keep("2026-11-22-080000", 7'200);
    const auto bytes = platform::binaryPropertyList(platform::Dictionary{{"Snapshots", kept}});
    const auto file = standIn.folder.write("db/snapshots.plist", std::string(bytes->begin(), bytes->end()));
    standIn.say("localsnapshot", "Created local snapshot with date: 2026-11-22-100000\n");
    standIn.say("listlocalsnapshots",
                "com.apple.TimeMachine.2026-11-20-080000.local\n" // the system's own
                "com.apple.TimeMachine.2026-11-20-090000.local\n"
                "com.apple.TimeMachine.2026-11-21-120000.local\n"
                "com.apple.TimeMachine.2026-11-22-080000.local\n");
    {
        helper::SnapshotKeeper keeper(
            file, [] { return std::vector<std::string>(); }, std::make_shared<TimeMachineSnapshots>(standIn.tool()));
        keeper.setEnabled(true);
        CHECK(keeper.stop(std::chrono::seconds(20)));
    }
    const auto calls = standIn.calls();
    CHECK(calls.find("localsnapshot\n") != std::string::npos);
    CHECK(calls.find("deletelocalsnapshots 2026-11-20-090000\n") != std::string::npos);
    CHECK(calls.find("deletelocalsnapshots") == calls.rfind("deletelocalsnapshots")); // no other
    const auto stored = contentOfFile(file);
    CHECK(stored.find("2026-11-22-100000") != std::string::npos);
    CHECK(stored.find("2026-11-20-100000") == std::string::npos);
}

TEST_CASE("what https names is on https, and what comes over a network names no file")
{
    CHECK(AddressRules::mayName("https", "https"));
    CHECK_FALSE(AddressRules::mayName("https", "http"));
    CHECK_FALSE(AddressRules::mayName("https", "file"));
    CHECK(AddressRules::mayName("http", "https"));
    CHECK(AddressRules::mayName("http", "http"));
    CHECK_FALSE(AddressRules::mayName("http", "file"));
    CHECK(AddressRules::mayName("file", "file"));
    CHECK(AddressRules::mayName("file", "http"));
    CHECK_FALSE(AddressRules::mayName("https", "ftp"));
    CHECK_FALSE(AddressRules::mayName("file", ""));
}

TEST_CASE("a download is sent on to https, and to http only if it began there")
{
    CHECK(AddressRules::mayRedirect("https", "https"));
    CHECK_FALSE(AddressRules::mayRedirect("https", "http"));
    CHECK(AddressRules::mayRedirect("http", "http"));
    CHECK(AddressRules::mayRedirect("http", "https"));
    CHECK_FALSE(AddressRules::mayRedirect("file", "http"));
    CHECK_FALSE(AddressRules::mayRedirect("https", "file"));
    CHECK_FALSE(AddressRules::mayRedirect("http", "file"));
}
