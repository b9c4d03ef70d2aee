#include "diagnostics/log/ZRKLog.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t nobody = 65534;

void require(int result, const char* what)
{
    if (result != 0)
        throw std::runtime_error(what);
}

void becomeUser(uid_t real, uid_t effective)
{
    require(::setgroups(0, nullptr), "setgroups");
    require(::setresgid(nobody, nobody, nobody), "setresgid");
    require(::setresuid(real, effective, effective), "setresuid");
}

// The real machine with a home and a root that every user may write to.
struct MachineFixture {
    MachineFixture()
    {
        for (const auto* folder : {&_root, &_home})
            std::filesystem::permissions(folder->path(), std::filesystem::perms::all);
    }

    // Logs in a process of its own, and returns what that said on standard error.
    std::string log(const char* message, const std::function<void()>& prepare = [] { }) const
    {
        return inForkedProcess([&] {
            const auto output = _home.file("stderr");
            int descriptor = ::open(output.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
            ::dup2(descriptor, STDERR_FILENO);
            prepare();
            ZRKLogInit("com.zerkolin.brevane", "application");
            ZRKLogMessage(LogLevelError, "%@", {message});
            ZRKLogMessage(LogLevelError, "%@ again", {message});
            std::string said(4096, '\0');
            auto length = ::pread(descriptor, said.data(), said.size(), 0);
            said.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
            return said;
        });
    }
    std::string userLog() const { return contentOfFile(_home.file("Library/Logs/Brevane/application.log")); }
    std::string rootLog() const { return contentOfFile(_root.file("Library/Logs/Brevane/application.log")); }
    std::string systemLog() const { return contentOfFile(_root.file("var/log/system.jsonl")); }

    TemporaryDirectory _root;
    TemporaryDirectory _home;
    EnvironmentVariable _rootVariable{"BREVANE_ROOT", _root.path()};
    EnvironmentVariable _homeVariable{"HOME", _home.path()};
};

bool isRoot()
{
    return ::geteuid() == 0;
}

std::function<void()> asUser()
{
    return isRoot() ? [] { becomeUser(nobody, nobody); } : std::function<void()>([] {});
}

} // namespace

TEST_CASE_FIXTURE(MachineFixture, "a user's messages go to the home's log folder and to the system's log")
{
    CHECK(log("from a user", asUser()) == "");
    CHECK(userLog().find("] from a user\n") != std::string::npos);
    CHECK(rootLog().empty());
    CHECK(systemLog().find("\"eventMessage\":\"from a user\"") != std::string::npos);
    CHECK(systemLog().find("\"messageType\":\"Error\",\"subsystem\":\"com.zerkolin.brevane\",\"category\":"
                           "\"application\"")
          != std::string::npos);
}

TEST_CASE_FIXTURE(MachineFixture, "root's messages go to the system's log folder, by the real or the effective user id")
{
    if (!isRoot()) {
        MESSAGE("SKIPPED: needs root");
        return;
    }
    CHECK(log("from root") == "");
    CHECK(rootLog().find("] from root\n") != std::string::npos);

    std::filesystem::permissions(_root.file("Library/Logs/Brevane"), std::filesystem::perms::all);
    std::filesystem::permissions(_root.file("Library/Logs/Brevane/application.log"), std::filesystem::perms::all);
    std::filesystem::permissions(_root.file("var/log/system.jsonl"), std::filesystem::perms::all);
    CHECK(log("effective root", [] { becomeUser(nobody, 0); }) == "");
    CHECK(rootLog().find("] effective root\n") != std::string::npos);
    CHECK(log("real root", [] { becomeUser(0, nobody); }) == "");
    CHECK(rootLog().find("] real root\n") != std::string::npos);
    CHECK(userLog().empty());
}

TEST_CASE_FIXTURE(MachineFixture,
                  "in a home that the user may not write to, one failure is reported and logging goes on")
{
    auto prepare = [this, user = asUser()] {
        require(::mkdir(_home.file("Library").c_str(), 0555), "mkdir");
        user();
    };
    CHECK(log("without a file", prepare) == "Failed to open log file (" + std::to_string(ENOENT) + ").\n");
    CHECK(userLog().empty());
    CHECK(systemLog().find("\"eventMessage\":\"without a file again\"") != std::string::npos);
    CHECK(systemLog().find("\"eventMessage\":\"Failed to open log file (2).\"") != std::string::npos);
}

TEST_CASE_FIXTURE(MachineFixture,
                  "with a log folder that the user may not write to, the failure says that it was denied")
{
    auto prepare = [this, user = asUser()] {
        std::filesystem::create_directories(_home.file("Library/Logs/Brevane"));
        require(::chmod(_home.file("Library/Logs/Brevane").c_str(), 0555), "chmod");
        user();
    };
    CHECK(log("without a file", prepare) == "Failed to open log file (" + std::to_string(EACCES) + ").\n");
}

TEST_CASE_FIXTURE(MachineFixture, "on a full disk each line that cannot be written is reported, and what fits is kept")
{
    const auto folder = _root.file("Library/Logs/Brevane");
    auto fillDisk = [&] {
        std::filesystem::create_directories(folder);
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") != 0)
            return false;
        std::ofstream filler(folder + "/filler", std::ios::binary);
        filler << std::string(1024 * 1024, 'x');
        return true;
    };
    if (!isRoot() || inForkedProcess([&] { return std::string(fillDisk() ? "yes" : "no"); }) == "no") {
        MESSAGE("SKIPPED: a small disk cannot be mounted here");
        return;
    }
    const auto said = log("no space", [&] { fillDisk(); });
    const auto failure = "Failed to write to log file (" + std::to_string(ENOSPC) + ") '";
    CHECK(said.starts_with(failure));
    CHECK(said.find("] no space\n'.\n" + failure) != std::string::npos);
    CHECK(said.ends_with("] no space again\n'.\n"));
}
