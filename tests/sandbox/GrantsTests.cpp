#include "sandbox/authority/Grants.h"
#include "tests/support/ChildProcess.h"

#include <doctest/doctest.h>
#include <unistd.h>

namespace {

const Process asker{100, 5};
const Grants::Clock::time_point start{};

} // namespace

TEST_CASE("a grant holds for the process and the action that it was given for")
{
    Grants grants;
    auto identifier = grants.add(asker, "a", start).identifier;
    REQUIRE(grants.find(asker, "a", start));
    CHECK(grants.find(asker, "a", start)->identifier == identifier);
    CHECK_FALSE(grants.find(asker, "b", start));
    CHECK_FALSE(grants.find({101, 5}, "a", start));
}

TEST_CASE("a later process with the same number has no grant")
{
    Grants grants;
    grants.add(asker, "a", start);
    CHECK_FALSE(grants.find({100, 6}, "a", start));
}

TEST_CASE("a grant ends after five minutes")
{
    using namespace std::chrono_literals;
    Grants grants;
    grants.add(asker, "a", start);
    CHECK(grants.find(asker, "a", start + 299s));
    CHECK_FALSE(grants.find(asker, "a", start + 300s));
    CHECK(grants.all(start + 300s).empty());
}

TEST_CASE("grants are revoked by their identifier, and all those of a process at once")
{
    Grants grants;
    auto first = grants.add(asker, "a", start).identifier;
    auto second = grants.add(asker, "b", start).identifier;
    grants.add({200, 1}, "a", start);
    CHECK(first != second);
    CHECK(grants.revoke(first));
    CHECK_FALSE(grants.revoke(first));
    CHECK_FALSE(grants.find(asker, "a", start));
    grants.revokeAll(asker);
    CHECK(grants.all(start).size() == 1);
}

TEST_CASE("a process is known by its number and start time while it runs")
{
    auto self = Process::running(static_cast<std::uint32_t>(::getpid()));
    REQUIRE(self);
    CHECK(self->startTime > 0);
    CHECK(self == Process::running(static_cast<std::uint32_t>(::getpid())));

    ChildProcess child({"sleep", "100"});
    auto running = Process::running(static_cast<std::uint32_t>(child.pid()));
    REQUIRE(running);
    CHECK(running->startTime >= self->startTime);
    child.kill();
    CHECK_FALSE(Process::running(static_cast<std::uint32_t>(child.pid())));
}
