#include "platform/FileDescriptor.h"
#include "platform/RunningBackup.h"
#include "tests/conditions/Following.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using platform::RunningBackup;

namespace {

struct LockFixture {
    platform::FileDescriptor open() const
    {
        return platform::FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    }
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    std::string path = root.file("var/run/backupd.lock");
};

constexpr RunningBackup held{true};
constexpr RunningBackup isFree{false};

} // namespace

TEST_CASE_FIXTURE(LockFixture, "another's lock is seen when it is taken, and when it is given back")
{
    Following<RunningBackup> state(platform::followRunningBackup);
    CHECK(state.current() == isFree);
    auto file = open();
    usleep(100'000); // the lock need not come with the file
    REQUIRE(flock(file.get(), LOCK_EX) == 0);
    CHECK(state.becomes(held));
    SUBCASE("with its file")
    {
        file.reset();
    }
    SUBCASE("while the file stays open")
    {
        flock(file.get(), LOCK_UN);
    }
    CHECK(state.becomes(isFree));
    CHECK(state.told() == 2);
}

TEST_CASE_FIXTURE(LockFixture, "a lock that is held already is seen from the start, and the one who waited for it too")
{
    root.write("var/run/backupd.lock", "");
    auto first = open();
    REQUIRE(flock(first.get(), LOCK_EX) == 0);
    Following<RunningBackup> state(platform::followRunningBackup);
    CHECK(state.current() == held);
    first.reset();
    CHECK(state.becomes(isFree));
    const auto second = open();
    REQUIRE(flock(second.get(), LOCK_EX) == 0);
    CHECK(state.becomes(held));
}

TEST_CASE_FIXTURE(LockFixture, "a lock file that is removed and made anew is followed")
{
    Following<RunningBackup> state(platform::followRunningBackup);
    REQUIRE(unlink(path.c_str()) == 0);
    usleep(200'000);
    const auto file = open();
    REQUIRE(flock(file.get(), LOCK_EX) == 0);
    CHECK(state.becomes(held));
}
