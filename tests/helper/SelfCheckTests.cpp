#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/update/SelfCheck.h"
#include "tests/helper/support/DescriptorLimit.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <doctest/doctest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// Programs that are tried as new versions, and the log of this process.
struct TriedPrograms {
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    EnvironmentVariable home{"HOME", root.file("home")};

    TriedPrograms() { ZRKLogInit("com.zerkolin.brevane.tests", "trying"); }

    // Why a program of these commands is not usable; empty when it is.
    std::string refusal(const std::string& commands, std::chrono::milliseconds limit = 20s) const
    {
        const auto program = root.write("program", "#!/bin/sh\n" + commands + "\n");
        REQUIRE(::chmod(program.c_str(), 0755) == 0);
        const auto checked = helper::checkProgram(program, {"--root", "/srv"}, limit);
        if (checked)
            return {};
        CHECK(checked.error().domain == platform::POSIXErrorDomain);
        CHECK(checked.error().code == EBADMSG);
        return platform::localizedDescription(checked.error());
    }
    std::string log() const { return contentOfFile(ZRKLogGetParentPath() + "/trying.log"); }
};

constexpr const char* cannotWork = "The new version cannot work here: its helper ";

} // namespace

TEST_CASE_FIXTURE(TriedPrograms,
                  "a new version that ends well is usable, and has been asked with the helper's arguments")
{
    CHECK(refusal("test \"$*\" = '--self-check --root /srv' && ! read line").empty());
    CHECK(refusal("echo fine; echo fine >&2").empty());
    CHECK(log().empty());
}

TEST_CASE_FIXTURE(TriedPrograms, "why a new version is not usable is told, and what it said is in the log")
{
    CHECK(refusal("echo one; echo two >&2; exit 3") == cannotWork + std::string("ends with status 3."));
    CHECK(log().contains("The new version says: one\ntwo\n"));
    CHECK(refusal("kill -9 $$") == cannotWork + std::string("ends with signal 9."));
    CHECK(refusal("exec /nonexistent") == cannotWork + std::string("ends with status 127."));
    CHECK(refusal("exec sleep 100", 100ms) == cannotWork + std::string("does not answer in time."));
    CHECK(refusal("exec >&- 2>&-; exec sleep 100", 100ms) == cannotWork + std::string("does not answer in time."));
    const auto missing = helper::checkProgram(root.file("none"), {}, 1s);
    REQUIRE_FALSE(missing);
    CHECK(platform::localizedDescription(missing.error()) == cannotWork + std::string("cannot be started."));
}

TEST_CASE_FIXTURE(TriedPrograms, "of what a new version says 4096 bytes are in the log")
{
    CHECK_FALSE(refusal("head -c 100000 /dev/zero | tr '\\0' x; exit 1").empty());
    CHECK(log().contains("says: " + std::string(4096, 'x') + "\n"));
}

TEST_CASE_FIXTURE(TriedPrograms, "what a new version leaves running ends with its check")
{
    CHECK(refusal("sleep 100 >/dev/null 2>&1 & echo $! >'" + root.file("left") + "'").empty());
    const auto program = "/proc/" + std::to_string(std::stoi(contentOfFile(root.file("left")))) + "/exe";
    const auto runs = [&] { // one that nobody has waited for yet has no program any more
        char path[PATH_MAX];
        return ::readlink(program.c_str(), path, sizeof path) > 0;
    };
    for (const auto end = std::chrono::steady_clock::now() + 20s; runs() && std::chrono::steady_clock::now() < end;)
        std::this_thread::sleep_for(1ms);
    CHECK_FALSE(runs());
}

TEST_CASE("that a new version cannot be tried is told with the system's reason")
{
    for (const int count : {0, 1}) {
        platform::Result<void> checked;
        {
            const DescriptorLimit few(count);
            checked = helper::checkProgram("/bin/true", {}, std::chrono::seconds(20));
        }
        REQUIRE_FALSE(checked);
        CHECK(checked.error().code == EMFILE);
        CHECK(platform::localizedDescription(checked.error())
              == "The new version could not be tried. Too many open files.");
    }
}
