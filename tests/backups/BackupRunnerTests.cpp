#include "platform/Clock.h"
#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/RunningBackup.h"
#include "tests/backups/RunnerFixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Instrumented.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/file.h>
#include <sys/mount.h>
#include <sysexits.h>
#include <unistd.h>

using platform::BackupEvent;
using namespace std::chrono_literals;

namespace {

struct MountedFolder {
    std::string path;
    ~MountedFolder() { ::umount2(path.c_str(), MNT_DETACH); }
};

} // namespace

TEST_CASE_FIXTURE(RunnerFixture, "a backup that ends well is told with its status, and its output is in the log")
{
    const auto runner = makeRunner();
    CHECK_FALSE(runner->running());
    CHECK_FALSE(runner->lastEnd());
    REQUIRE(runner->start(job("a-1", {shell("echo one; echo two >&2; printf 'three\\rfour'")})));
    CHECK(event(0) == ended("a-1", 0));
    CHECK_FALSE(runner->running());
    CHECK(runner->lastEnd() == ended("a-1", 0));
    for (const auto* const line : {"\"one\"", "\"two\"", "\"three\"", "\"four\""})
        CHECK(log().find("\"subsystem\":\"com.apple.TimeMachine\",\"category\":\"General\",\"eventMessage\":"
                         + std::string(line))
              != std::string::npos);
    CHECK(log().find("com.zerkolin.brevane.backupd\"") != std::string::npos);
}

TEST_CASE_FIXTURE(RunnerFixture, "commands run one after another until one fails")
{
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {shell("echo first"), shell("exit 3"), shell("echo never")})));
    CHECK(event(0) == ended("a-1", 3));
    CHECK(log().find("\"first\"") != std::string::npos);
    CHECK(log().find("\"never\"") == std::string::npos);
    REQUIRE(runner->start(job("a-2", {shell("kill -9 $$")})));
    CHECK(event(1) == ended("a-2", -9));
}

TEST_CASE_FIXTURE(RunnerFixture, "a program that is not there, or cannot be run, fails with words in the log")
{
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {{"/nowhere/borg", "create"}})));
    CHECK(event(0) == ended("a-1", 127));
    CHECK(log().find("'/nowhere/borg' could not be run. No such file or directory.") != std::string::npos);
    REQUIRE(runner->start(job("a-2", {{root.write("text", "no program")}})));
    CHECK(event(1) == ended("a-2", 126));
}

TEST_CASE_FIXTURE(RunnerFixture, "the lock is held while a backup runs, and another one is refused")
{
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {shell("sleep 1")})));
    REQUIRE(backupProcess("a-1") > 0);
    CHECK(runner->running() == "a-1");
    CHECK(platform::isBackupRunning());
    const auto second = runner->start(job("a-2", {shell("exit 0")}));
    REQUIRE_FALSE(second);
    CHECK(second.error().code == EBUSY);
    CHECK(event(0) == ended("a-1", 0));
    CHECK_FALSE(platform::isBackupRunning());
    CHECK(countOfEvents() == 1);
}

TEST_CASE_FIXTURE(RunnerFixture, "while another holds the lock nothing is backed up")
{
    const auto path = root.write("var/run/backupd.lock", "");
    const platform::FileDescriptor other(open(path.c_str(), O_RDWR | O_CLOEXEC));
    REQUIRE(flock(other.get(), LOCK_EX) == 0);
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {shell("echo never")})));
    CHECK(event(0) == ended("a-1", EX_TEMPFAIL));
    CHECK(log().find("Another backup is running.") != std::string::npos);
    CHECK(log().find("\"never\"") == std::string::npos);
    CHECK_FALSE(runner->lastEnd());
}

TEST_CASE_FIXTURE(RunnerFixture, "a backup that comes to life when it has been given up is not made")
{
    // As its starter left it, and the system got round to it later.
    const auto runLate = [&](std::chrono::nanoseconds beginBefore) {
        auto late = job("a-1", {shell("echo made")});
        late.beginBefore = beginBefore;
        const auto bytes = platform::encodedBackupJob(late);
        const auto file = root.write("job", std::string(bytes.begin(), bytes.end()));
        ChildProcess process(
            {"/bin/sh", "-c",
             "exec '" BREVANE_BACKUP_DAEMON "' --root '" + root.path() + "' --identifier a-1 <'" + file + "'"});
        return process.wait();
    };
    const auto now = platform::readClocks().sinceBoot;
    CHECK(runLate(now - 1ns) == EX_TEMPFAIL);
    CHECK(log().find("The backup came to life too late, and is not made.") != std::string::npos);
    CHECK(log().find("\"made\"") == std::string::npos);
    CHECK_FALSE(platform::readBackupRecord());
    CHECK(runLate(now + 60s) == 0);
    CHECK(log().find("\"made\"") != std::string::npos);
    CHECK(platform::readBackupRecord());
}

TEST_CASE_FIXTURE(RunnerFixture, "a backup that is started may begin for as long as its starter waits for it")
{
    const auto runner = makeRunner();
    const auto before = platform::readClocks().sinceBoot;
    REQUIRE(runner->start(job("a-1", {shell("exit 0")})));
    const auto after = platform::readClocks().sinceBoot;
    const auto written = platform::readBackupJob();
    REQUIRE(written);
    REQUIRE(written->beginBefore);
    CHECK(*written->beginBefore >= before + platform::BackupRunner::BeginLimit);
    CHECK(*written->beginBefore <= after + platform::BackupRunner::BeginLimit);
    CHECK(event(0) == ended("a-1", 0));
}

TEST_CASE_FIXTURE(RunnerFixture, "a backup that takes too long is told and goes on")
{
    const auto runner = makeRunner();
    auto slow = job("a-1", {shell("sleep 2; exit 4")});
    slow.overdueAfter = 1s;
    REQUIRE(runner->start(slow));
    CHECK(event(0) == BackupEvent{BackupEvent::Kind::Overdue, "a-1", {}});
    CHECK(runner->running() == "a-1");
    CHECK(event(1) == ended("a-1", 4));
}

TEST_CASE_FIXTURE(RunnerFixture, "on a full disk a backup runs all the same, and its end is known")
{
    const auto folder = root.file("var/db/brevane");
    REQUIRE(platform::createFolder(folder));
    if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=4k") != 0) {
        std::puts("SKIPPED: only root can mount a small disk");
        return;
    }
    const MountedFolder mounted{folder};
    std::ofstream(folder + "/everything") << std::string(4096, 'x');
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {shell("echo made")})));
    CHECK(event(0) == ended("a-1", 0));
    REQUIRE(runner->start(job("a-2", {shell("exit 3")})));
    CHECK(event(1) == ended("a-2", 3));
    CHECK(log().find("\"made\"") != std::string::npos);
    CHECK(log().find("could not be written down. No space left on device.") != std::string::npos);
}

TEST_CASE_FIXTURE(RunnerFixture, "a gigabyte of output fills neither the log nor the memory")
{
    const std::string bytes = areThreadsChecked ? "100000000" : "1000000000"; // which takes as long
    const auto runner = makeRunner();
    REQUIRE(runner->start(job(
        "a-1",
        {shell("echo begin; yes 0123456789012345678901234567890123456789 | head -c " + bytes + "; echo; echo end")})));
    const auto process = backupProcess("a-1");
    long peak = 0; // kilobytes
    while (countOfEvents() == 0) {
        // The system gives this file no size.
        std::ifstream file("/proc/" + std::to_string(process) + "/status");
        const std::string status{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (const auto at = status.find("VmHWM:"); at != std::string::npos)
            peak = std::max(peak, std::stol(status.substr(at + 6)));
        usleep(50'000);
    }
    CHECK(event(0) == ended("a-1", 0));
    CHECK(peak > 0);
    CHECK(peak < (isInstrumented ? 1'000'000 : 30'000)); // what a sanitizer keeps of what was freed counts too
    const auto text = log();
    CHECK(text.size() < 1'000'000);
    CHECK(text.find("\"begin\"") != std::string::npos);
    CHECK(text.find("lines left out)") != std::string::npos);
    CHECK(text.find("\"end\"") != std::string::npos);
}

TEST_CASE_FIXTURE(RunnerFixture, "what a program leaves behind in the background is not waited for")
{
    const auto runner = makeRunner();
    const auto start = std::chrono::steady_clock::now();
    REQUIRE(runner->start(job("a-1", {shell("sleep 15 & exit 0")})));
    CHECK(event(0) == ended("a-1", 0));
    CHECK(std::chrono::steady_clock::now() - start < 10s);
}

TEST_CASE_FIXTURE(RunnerFixture, "a backup outlives the process that started it and is found again")
{
    {
        ChildProcess starter({BREVANE_BACKUP_STARTER, "a-1", "/bin/sh", "-c", "sleep 2; exit 5"});
        REQUIRE(starter.readLine() == "started");
        REQUIRE(backupProcess("a-1") > 0);
        starter.kill();
    }
    const auto runner = makeRunner();
    CHECK(runner->running() == "a-1");
    CHECK(platform::isBackupRunning());
    CHECK_FALSE(runner->start(job("a-2", {shell("exit 0")})));
    CHECK(event(0) == ended("a-1", 5));
    CHECK(countOfEvents() == 1);
}

TEST_CASE_FIXTURE(RunnerFixture, "how a backup ended while nobody watched is known afterwards")
{
    {
        ChildProcess starter({BREVANE_BACKUP_STARTER, "a-1", "/bin/sh", "-c", "exit 6"});
        REQUIRE(starter.readLine() == "started");
        starter.kill();
    }
    for (int attempt = 0; attempt < 500 && (backupProcess("a-1") == 0 || !platform::readBackupRecord()->status);
         ++attempt)
        usleep(10'000);
    const auto runner = makeRunner();
    CHECK_FALSE(runner->running());
    CHECK(runner->lastEnd() == ended("a-1", 6));
    queue->sync([] { });
    CHECK(countOfEvents() == 0);
}

TEST_CASE_FIXTURE(RunnerFixture, "a backup whose process is killed has no status, and its program ends with it")
{
    const auto runner = makeRunner();
    REQUIRE(runner->start(job("a-1", {{"/bin/sleep", "60"}})));
    const auto process = backupProcess("a-1");
    REQUIRE(process > 0);
    REQUIRE(kill(process, SIGKILL) == 0);
    CHECK(event(0) == ended("a-1", std::nullopt));
    CHECK_FALSE(runner->running());
    CHECK_FALSE(runner->lastEnd());
    // A program that was just about to run has the lock's file for another moment.
    for (int attempt = 0; platform::isBackupRunning() && attempt < 200; ++attempt)
        usleep(10'000);
    CHECK_FALSE(platform::isBackupRunning());
}

TEST_CASE_FIXTURE(RunnerFixture, "a record of a process whose number another one has got by now is not taken for it")
{
    REQUIRE(platform::writeBackupRecord({.identifier = "a-1",
                                         .process = getpid(),
                                         .processStart = platform::startOfProcess(getpid()) + 1,
                                         .began = 0,
                                         .status = {}}));
    CHECK_FALSE(makeRunner()->running());
    REQUIRE(platform::writeBackupRecord({.identifier = "a-1",
                                         .process = getpid(),
                                         .processStart = platform::startOfProcess(getpid()),
                                         .began = 0,
                                         .status = {}}));
    CHECK(makeRunner()->running() == "a-1");
}
