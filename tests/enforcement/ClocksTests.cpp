#include "helper/enforcement/Clocks.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedPlatform.h"

#include <chrono>
#include <doctest/doctest.h>
#include <optional>

using helper::Clocks;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

constexpr scheduling::Instant newYear = 1'767'225'600; // when the scripted clocks begin, 1000 s after the start

struct ClocksFixture {
    ClocksFixture() { scripted::reset(); }
};

} // namespace

TEST_CASE_FIXTURE(ClocksFixture, "the clocks are read in whole seconds, the elapsed ones since the machine was started")
{
    Clocks clocks;
    CHECK(clocks.read().now.clock == newYear);
    CHECK(clocks.read().now.elapsed == 1000);
    scripted::clock::advance(milliseconds(2999));
    const auto reading = clocks.read();
    CHECK(reading.now.clock == newYear + 2);
    CHECK(reading.now.elapsed == 1002);
    CHECK_FALSE(reading.before);
    CHECK_FALSE(reading.slept);
    CHECK(clocks.elapsedAt(seconds(1000)) == 1000);
    CHECK(clocks.elapsedAt(milliseconds(999'999)) == 999);
}

TEST_CASE_FIXTURE(ClocksFixture, "whole seconds begin together, wherever in a second the machine was started")
{
    scripted::clock::setClockBy(milliseconds(700));
    Clocks clocks;
    scripted::clock::advance(milliseconds(299));
    CHECK(clocks.read().now.clock == newYear);
    CHECK(clocks.read().now.elapsed == 1000);
    scripted::clock::advance(milliseconds(1));
    CHECK(clocks.read().now.clock == newYear + 1);
    CHECK(clocks.read().now.elapsed == 1001);
    CHECK(clocks.elapsedAt(milliseconds(1'000'299)) == 1000);
    CHECK(clocks.elapsedAt(milliseconds(1'000'300)) == 1001);
}

TEST_CASE_FIXTURE(ClocksFixture,
                  "a clock that is set by more than a tenth of a second is told once, and no time elapses")
{
    Clocks clocks;
    scripted::clock::setClockBy(milliseconds(100));
    CHECK_FALSE(clocks.read().before);
    scripted::clock::setClockBy(milliseconds(1));
    CHECK(clocks.read().before == newYear);
    CHECK_FALSE(clocks.read().before);
    for (const auto amount : {seconds(3600), seconds(-7200)}) {
        const auto before = clocks.read().now;
        scripted::clock::setClockBy(amount);
        const auto reading = clocks.read();
        CHECK(reading.before == before.clock);
        CHECK(reading.now.clock == before.clock + amount.count());
        CHECK(reading.now.elapsed == before.elapsed);
        CHECK_FALSE(reading.slept);
    }
}

TEST_CASE_FIXTURE(ClocksFixture, "a sleep of more than a second is told once, and its time has elapsed")
{
    Clocks clocks;
    scripted::clock::sleep(seconds(1));
    CHECK_FALSE(clocks.read().slept);
    scripted::clock::sleep(milliseconds(1001));
    const auto reading = clocks.read();
    CHECK(reading.slept);
    CHECK_FALSE(reading.before);
    CHECK(reading.now.elapsed == 1002);
    CHECK_FALSE(clocks.read().slept);
}
