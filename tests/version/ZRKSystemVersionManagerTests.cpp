#include "tests/platform/ScriptedSystemInformation.h"
#include "version/ZRKSystemVersionManager.h"

#include <doctest/doctest.h>
#include <thread>
#include <vector>

namespace {

ZRKSystemVersionManager& managerOn(platform::OperatingSystemVersion version)
{
    scripted::system::reset();
    scripted::system::setOperatingSystemVersion(version);
    return ZRKSystemVersionManager::sharedManager();
}

} // namespace

TEST_CASE("release 3 is not there on 10.12, and there on 10.13 and everything later")
{
    CHECK_FALSE(managerOn({10, 12, 0}).runningAtLeast(3));
    CHECK_FALSE(managerOn({10, 12, 6}).runningAtLeast(3));
    CHECK(managerOn({10, 13, 0}).runningAtLeast(3));
    CHECK(managerOn({10, 15, 7}).runningAtLeast(3));
    CHECK(managerOn({11, 0, 0}).runningAtLeast(3));
    CHECK(managerOn({14, 2, 1}).runningAtLeast(3));
}

TEST_CASE("each release number up to 5 stands for one minor version")
{
    for (unsigned release = 0; release <= 5; ++release) {
        auto minor = static_cast<std::int64_t>(release) + 10;
        CAPTURE(release);
        CHECK(managerOn({10, minor, 0}).runningAtLeast(release));
        CHECK_FALSE(managerOn({10, minor - 1, 99}).runningAtLeast(release));
    }
}

TEST_CASE("release 6 and above is there on every system that offers the query")
{
    for (unsigned release : {6U, 7U, 100U, ~0U}) {
        CHECK(managerOn({10, 10, 0}).runningAtLeast(release));
        CHECK(managerOn({14, 0, 0}).runningAtLeast(release));
    }
}

TEST_CASE("no release number is there on a system without the query, not even 6")
{
    for (unsigned release : {0U, 2U, 5U, 6U, ~0U})
        CHECK_FALSE(managerOn({10, 9, 5}).runningAtLeast(release));
}

TEST_CASE("a whole version is asked of the system where it offers the query")
{
    CHECK(managerOn({13, 1, 2}).runningAtLeastVersion({13, 1, 2}));
    CHECK(managerOn({13, 1, 2}).runningAtLeastVersion({13, 0, 9}));
    CHECK(managerOn({13, 1, 2}).runningAtLeastVersion({10, 9, 5}));
    CHECK_FALSE(managerOn({13, 1, 2}).runningAtLeastVersion({13, 1, 3}));
    CHECK_FALSE(managerOn({13, 1, 2}).runningAtLeastVersion({13, 2, 0}));
    CHECK_FALSE(managerOn({13, 1, 2}).runningAtLeastVersion({14, 0, 0}));
}

TEST_CASE("on a system without the query 10.9 is there whatever the patch, and nothing else, older or newer")
{
    auto& manager = managerOn({10, 9, 2});
    CHECK(manager.runningAtLeastVersion({10, 9, 5}));
    CHECK(manager.runningAtLeastVersion({10, 9, 0}));
    CHECK_FALSE(manager.runningAtLeastVersion({10, 8, 0}));
    CHECK_FALSE(manager.runningAtLeastVersion({10, 10, 0}));
    CHECK_FALSE(manager.runningAtLeastVersion({9, 9, 0}));
    CHECK_FALSE(manager.runningAtLeastVersion({11, 9, 0}));
}

TEST_CASE("every thread gets the same manager")
{
    std::vector<ZRKSystemVersionManager*> found(8);
    std::vector<std::thread> threads;
    for (auto& slot : found)
        threads.emplace_back([&slot] { slot = &ZRKSystemVersionManager::sharedManager(); });
    for (auto& thread : threads)
        thread.join();
    for (auto* manager : found)
        CHECK(manager == &ZRKSystemVersionManager::sharedManager());
}
