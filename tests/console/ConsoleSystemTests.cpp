#include "diagnostics/console/BRVConsoleController.h"
#include "diagnostics/log/ZRKLog.h"
#include "platform/FileWriting.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/Process.h"
#include "tests/platform/ui/User.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/Instrumented.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

TEST_SUITE_BEGIN("windows");

using namespace platform;

namespace {

// A root in which the log tool is a shell script.
struct Root {
    Root() : root("BREVANE_ROOT", folder.path()), home("HOME", folder.path())
    {
        ZRKLogInit("com.zerkolin.brevane", "application");
    }

    void setTool(const std::string& script) const
    {
        const auto path = folder.write("usr/bin/log", "#!/bin/sh\n" + script + "\n");
        ::chmod(path.c_str(), 0755);
    }
    std::string file(const char* name) const { return folder.file(name); }
    std::string log() const { return contentOfFile(file("var/log/system.jsonl")); }

    TemporaryDirectory folder;
    EnvironmentVariable root;
    EnvironmentVariable home;
    EnvironmentVariable locale{"LC_ALL", "C"};
    EnvironmentVariable zone{"TZ", "UTC"};
};

StyledText fetchedLog()
{
    LogFetch fetch;
    return BRVConsoleController::fetchLog(fetch);
}

bool saidSo(const Root& root)
{
    return root.log().find("Failed to read logs. ") != std::string::npos;
}

constexpr const char* oneRecord = R"([{"timestamp":"2026-11-20 09:56:22.123456+0000","messageType":"Error",)"
                                  R"("subsystem":"com.apple.TimeMachine","eventMessage":"real"}])";

long peakMemory() // kilobytes
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::atol(line.c_str() + 6);
    }
    return 0;
}

pid_t pidIn(const std::string& path)
{
    pid_t pid = 0;
    for (int attempt = 0; attempt < 400 && pid == 0; ++attempt) {
        pid = std::atoi(contentOfFile(path).c_str());
        ::usleep(25000);
    }
    return pid;
}

bool isGone(pid_t pid)
{
    for (int attempt = 0; attempt < 400; ++attempt) {
        if (::kill(pid, 0) != 0)
            return true;
        ::usleep(25000);
    }
    return false;
}

} // namespace

TEST_CASE("a real tool is given its arguments and its output is read")
{
    const Root root;
    root.setTool("printf '%s\\n' \"$0\" \"$@\" > \"$BREVANE_ROOT/arguments\"\nprintf '%s' '" + std::string(oneRecord)
                 + "'");
    CHECK(fetchedLog().string() == "11/20/26, 9:56:22\u202FAM Time Machine real\n");
    CHECK(contentOfFile(root.file("arguments"))
          == root.file("usr/bin/log")
              + "\nshow\n--debug\n--info\n--predicate\n(subsystem == \"com.zerkolin.brevane\") || ((subsystem == "
                "\"com.apple.TimeMachine\") && (processImagePath endswith \"backupd\"))\n--style\njson\n");
    CHECK_FALSE(saidSo(root));
}

TEST_CASE("the tool's exit status is not looked at")
{
    const Root root;
    root.setTool("printf '%s' '" + std::string(oneRecord) + "'; exit 3");
    CHECK_FALSE(fetchedLog().empty());
}

TEST_CASE("a tool that is missing, fails, is killed or prints nothing gives an empty text and an error in the log")
{
    for (const char* const script : {"exit 1", "printf '[{'; kill -9 $$", "exit 0", ""}) {
        const Root root;
        if (*script)
            root.setTool(script);
        CAPTURE(script);
        CHECK(fetchedLog().empty());
        CHECK(saidSo(root));
    }
}

TEST_CASE("a program that cannot be executed ends with status 1")
{
    std::fflush(nullptr); // the thread sanitizer has a process that ends flush what it inherited
    const auto process = Process::start("/nowhere/at/all", {"a"});
    REQUIRE(process);
    char byte = 0;
    CHECK((*process)->read({&byte, 1}) == 0);
    CHECK((*process)->waitUntilExit() == 1);
}

TEST_CASE("a process tells its status or the signal that ended it, and is killed when nobody wants it")
{
    const auto process = Process::start("/bin/sh", {"-c", "exit 7"});
    CHECK((*process)->waitUntilExit() == 7);
    CHECK((*process)->waitUntilExit() == 7);
    const auto killed = Process::start("/bin/sh", {"-c", "kill -9 $$"});
    CHECK((*killed)->waitUntilExit() == -SIGKILL);

    const TemporaryDirectory folder;
    {
        const auto hanging = Process::start("/bin/sh", {"-c", "echo $$ > " + folder.file("pid") + "; exec sleep 1000"});
        CHECK(pidIn(folder.file("pid")) > 0);
    }
    CHECK(isGone(pidIn(folder.file("pid"))));
}

TEST_CASE("two gigabytes of nonsense take no memory and not long")
{
    const Root root;
    root.setTool("exec head -c 2147483648 /dev/zero");
    const auto before = peakMemory();
    const auto start = std::chrono::steady_clock::now();
    CHECK(fetchedLog().empty());
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    CHECK(saidSo(root));
    CHECK(peakMemory() - before < 50 * 1024);
    CHECK(elapsed.count() < 60);
}

TEST_CASE("reading a long log takes little more memory than its text")
{
    if (isInstrumented) {
        std::puts("SKIPPED: a sanitizer keeps memory of its own, and what was freed");
        return;
    }
    const Root root;
    constexpr double records = 80000;
    const std::string message(600, 'm');
    root.setTool(
        "exec awk 'BEGIN { printf \"[\"; for (i = 0; i < 80000; i++) printf \"%s{\\\"timestamp\\\":\\\"2026-11-20 "
        "09:56:22.123456+0000\\\",\\\"eventMessage\\\":\\\""
        + message + "\\\"}\", i ? \",\" : \"\"; print \"]\" }'");
    std::ofstream("/proc/self/clear_refs") << "5\n"; // the peak from now on
    const auto before = peakMemory();
    const auto text = fetchedLog();
    CHECK(text.lineCount() == 80000);
    const auto textKilobytes = static_cast<double>(text.size()) / 1024;
    CHECK(textKilobytes > records * 600 / 1024);
    CHECK(static_cast<double>(peakMemory() - before) < 1.5 * textKilobytes);
}

TEST_CASE("with a tool that hangs the window closes and the application ends, and the tool with it")
{
    const Root root;
    root.setTool("echo $$ > \"$BREVANE_ROOT/pid\"; exec sleep 1000");
    ChildProcess probe({CONSOLE_PROBE, "1500"},
                       {{"QT_QPA_PLATFORM", "offscreen"}, {"XDG_RUNTIME_DIR", root.folder.path()}});
    const auto tool = pidIn(root.file("pid"));
    REQUIRE(tool > 0);
    CHECK(::kill(tool, 0) == 0);
    CHECK(probe.readLine(20000) == "ended with 0");
    CHECK(probe.wait() == 0);
    CHECK(isGone(tool));
}

TEST_CASE("while a tool hangs the main thread goes on, the window closes and opens, and the controller may go")
{
    const Root root;
    root.setTool(
        "echo $$ > \"$BREVANE_ROOT/pid\"; while [ ! -e \"$BREVANE_ROOT/go\" ]; do sleep 0.05; done; echo '[]'");
    auto console = BRVConsoleController::create();
    console->showWindow();
    REQUIRE(pidIn(root.file("pid")) > 0);
    for (int turn = 0; turn < 5; ++turn) {
        console->window()->close();
        user::runEvents();
        console->showWindow();
        user::runEvents();
    }
    console.reset();
    root.folder.write("go", "");
    CHECK(isGone(pidIn(root.file("pid"))));
    user::runEvents();
}

TEST_CASE("a tool that never ends is killed when its fetch is stopped, before it starts or while it is read")
{
    const Root root;
    root.setTool("echo $$ > \"$BREVANE_ROOT/pid\"; printf '[{}'; exec sleep 1000");
    LogFetch fetch;
    std::thread stopping([&] {
        CHECK(pidIn(root.file("pid")) > 0);
        fetch.stop();
    });
    CHECK(BRVConsoleController::fetchLog(fetch).empty());
    stopping.join();
    CHECK(isGone(pidIn(root.file("pid"))));
    CHECK(BRVConsoleController::fetchLog(fetch).empty());
    CHECK_FALSE(saidSo(root));
    CHECK(fetch.failure.empty());
}

TEST_CASE("a process can be killed while another thread waits for it, and after its end")
{
    const auto process = Process::start("/bin/sleep", {"1000"});
    REQUIRE(process);
    std::thread killing([&process] {
        ::usleep(50000);
        (*process)->kill();
    });
    CHECK((*process)->waitUntilExit() == -SIGKILL);
    killing.join();
    (*process)->kill();
    CHECK((*process)->waitUntilExit() == -SIGKILL);
}

TEST_CASE("a file is replaced as a whole with its permissions, and tags are set where the file system keeps them")
{
    const TemporaryDirectory folder;
    const auto path = folder.file("a file");
    CHECK(writeFileAtomically(path, "one"));
    CHECK(contentOfFile(path) == "one");
    ::chmod(path.c_str(), 0600);
    CHECK(writeFileAtomically(path, "two"));
    CHECK(contentOfFile(path) == "two");
    struct stat status{};
    ::stat(path.c_str(), &status);
    CHECK((status.st_mode & 0777) == 0600);
    if (!setTagNames(path, {"backup", "Mac"})) {
        MESSAGE("The file system keeps no tags.");
        return;
    }
    char list[64] = {};
    ::getxattr(path.c_str(), "user.xdg.tags", list, sizeof list - 1);
    CHECK(std::string(list) == "backup,Mac");
}

TEST_CASE("a file behind symbolic links is written where they lead, and they stay")
{
    const TemporaryDirectory folder;
    folder.write("real/log.txt", "one");
    ::chmod(folder.file("real/log.txt").c_str(), 0600);
    REQUIRE(::symlink("real/log.txt", folder.file("relative").c_str()) == 0);
    REQUIRE(::symlink(folder.file("relative").c_str(), folder.file("absolute").c_str()) == 0);
    REQUIRE(::symlink("real/new.txt", folder.file("dangling").c_str()) == 0);
    REQUIRE(::symlink("round", folder.file("round").c_str()) == 0);
    const auto isLink = [&folder](const char* name) {
        struct stat status{};
        return ::lstat(folder.file(name).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
    };
    CHECK(writeFileAtomically(folder.file("absolute"), "two"));
    CHECK(contentOfFile(folder.file("real/log.txt")) == "two");
    CHECK(isLink("absolute"));
    CHECK(isLink("relative"));
    struct stat status{};
    CHECK((::stat(folder.file("real/log.txt").c_str(), &status) == 0 && (status.st_mode & 0777) == 0600));
    CHECK(writeFileAtomically(folder.file("dangling"), "three"));
    CHECK(contentOfFile(folder.file("real/new.txt")) == "three");
    CHECK(isLink("dangling"));
    const auto written = writeFileAtomically(folder.file("round"), "four");
    REQUIRE_FALSE(written);
    CHECK(written.error().underlying->code == ELOOP);
    CHECK(isLink("round"));
}

TEST_CASE("a file that cannot be written is told with its name and the reason, and leaves nothing behind")
{
    const TemporaryDirectory folder;
    const auto written = writeFileAtomically(folder.file("no folder/file.rtf"), "x");
    REQUIRE_FALSE(written);
    CHECK(localizedDescription(written.error()) == "The file \u201cfile.rtf\u201d could not be saved.");
    CHECK(written.error().code == 4);
    REQUIRE(written.error().underlying);
    CHECK(localizedDescription(*written.error().underlying) == "No such file or directory");
    ::mkdir(folder.file("folder").c_str(), 0755);
    CHECK_FALSE(writeFileAtomically(folder.file("folder"), "x"));
}

TEST_SUITE_END();
