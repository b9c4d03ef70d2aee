#include "helper/macos/timemachine/TimeMachineStatus.h"

#include <doctest/doctest.h>

using helper::TimeMachineStatus;

namespace {

TimeMachineStatus status(std::string_view output)
{
    const auto found = TimeMachineStatus::inOutput(output);
    REQUIRE(found);
    return *found;
}

constexpr const char* copying = R"(Backup session status:
{
    BackupPhase = Copying;
    ClientID = "com.apple.backupd";
    DateOfStateChange = "2026-11-22 03:56:03 +0000";
    DestinationID = "0394DD36-E843-40C4-84D6-56877D3052CD";
    DestinationMountPoint = "/Volumes/Backups of {mine}";
    FirstBackup = 1;
    FractionOfProgressBar = "0.9";
    Progress =     {
        Percent = "0.002399386254979543";
        "_raw_totalBytes" = 134334070784;
        bytes = 48640000;
        files = 378;
        totalFiles = 1321045;
    };
    Running = 1;
    Stopping = 0;
}
)";

} // namespace

TEST_CASE("a status tells that a backup is running, and its phase")
{
    CHECK(status(copying) == TimeMachineStatus{.isRunning = true, .isStopping = false, .phase = "Copying"});
    CHECK(status(copying).isCopying());
}

TEST_CASE("a status tells that no backup is running")
{
    const auto idle = status("Backup session status:\n{\n    ClientID = \"com.apple.backupd\";\n    Percent = \"-1\";\n"
                             "    Running = 0;\n}\n");
    CHECK(idle == TimeMachineStatus{});
    CHECK_FALSE(idle.isCopying());
}

TEST_CASE("a backup that was told to stop is running until it has")
{
    const auto stopping = status("{ BackupPhase = Copying; Running = 1; Stopping = 1; }");
    CHECK(stopping.isRunning);
    CHECK(stopping.isStopping);
    CHECK_FALSE(status("{ Running = 0; Stopping = 1; }").isStopping);
    CHECK_FALSE(status("{ Running = 1; }").isStopping);
    CHECK_FALSE(status("{ BackupPhase = Copying; Running = 0; }").isRunning);
    CHECK_FALSE(status("{ Running = soon; }").isRunning);
}

TEST_CASE("every phase of a backup counts as running, and only the copying and later ones as having copied")
{
    for (const char* const phase :
         {"Starting", "FindingBackupVol", "MountingBackupVol", "FindingChanges", "SizingChanges", "HealthCheckFsck",
          "PreparingSourceVolumes", "ThinningPreBackup"}) {
        const auto found = status(std::string("{ BackupPhase = ") + phase + "; Running = 1; }");
        CHECK_MESSAGE(found.isRunning, phase);
        CHECK_FALSE_MESSAGE(found.isCopying(), phase);
    }
    for (const char* const phase :
         {"Copying", "LazyThinning", "Finishing", "ThinningPostBackup", "DeletingOldBackups"}) {
        const auto found = status(std::string("{ BackupPhase = ") + phase + "; Running = 1; }");
        CHECK_MESSAGE(found.isRunning, phase);
        CHECK_MESSAGE(found.isCopying(), phase);
    }
}

TEST_CASE("without a word about running the phase tells it")
{
    CHECK(status("{ BackupPhase = Starting; }").isRunning);
    CHECK_FALSE(status("{ BackupPhase = BackupNotRunning; }").isRunning);
}

TEST_CASE("what is no status is none")
{
    for (const char* const output :
         {"", "Backup session status:\n", "{", "}", "}{", "{ Running = 1 ", "{ Running = ; }", "( Running, 1 )", "{ }",
          "{ ClientID = \"com.apple.backupd\"; }", "tmutil: unknown verb", "{ Running = 1; } { Running = 0; }"})
        CHECK_FALSE_MESSAGE(TimeMachineStatus::inOutput(output).has_value(), output);
}
