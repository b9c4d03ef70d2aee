#include "platform/Clock.h"
#include "platform/ComputerUse.h"
#include "tests/conditions/Following.h"
#include "tests/conditions/MockService.h"
#include "tests/support/PrivateBus.h"

#include <doctest/doctest.h>

using platform::ComputerUse;
using namespace std::chrono_literals;

namespace {

std::uint64_t microseconds(std::chrono::nanoseconds time)
{
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(time).count());
}

// The session of somebody at the machine, with the lid open.
struct UseFixture {
    UseFixture() { service.addSession("c1", "seat0"); }

    void setIdle(std::chrono::nanoseconds age) const
    {
        const auto now = platform::readClocks();
        service.setProperty("IdleSinceHint", "t", microseconds(now.sinceEpoch - age));
        service.setProperty("IdleSinceHintMonotonic", "t", microseconds(now.awake - age));
        service.setProperty("IdleHint", "b", 1);
    }

    PrivateBus bus;
    MockService service = MockService::login();
};

bool isPassive(const ComputerUse& use)
{
    return use.isPassive;
}

bool isActive(const ComputerUse& use)
{
    return use.isKnown && !use.isPassive;
}

} // namespace

TEST_CASE("without a login manager somebody is assumed to use the computer")
{
    PrivateBus bus;
    CHECK(Following<ComputerUse>(platform::followComputerUse).current() == ComputerUse{});
}

TEST_CASE_FIXTURE(UseFixture, "somebody who is logged in at the computer uses it")
{
    CHECK(Following<ComputerUse>(platform::followComputerUse).current() == ComputerUse{true, false, {}});
}

TEST_CASE_FIXTURE(UseFixture, "since when nobody has used the computer is a time since boot")
{
    Following<ComputerUse> use(platform::followComputerUse);
    setIdle(400s);
    CHECK(use.becomes([](const ComputerUse& value) { return value.unusedSince.has_value(); }));
    const auto age = platform::readClocks().sinceBoot - use.current().unusedSince.value_or(0ns);
    CHECK(age >= 400s);
    CHECK(age < 410s);
    CHECK_FALSE(use.current().isPassive);
    service.setProperty("IdleHint", "b", 0);
    CHECK(use.becomes(ComputerUse{true, false, {}}));
}

TEST_CASE_FIXTURE(UseFixture, "a clock that was set meanwhile changes nothing of how long nobody has used the computer")
{
    Following<ComputerUse> use(platform::followComputerUse);
    const auto now = platform::readClocks();
    service.setProperty("IdleSinceHint", "t", microseconds(now.sinceEpoch - 100'000s));
    service.setProperty("IdleSinceHintMonotonic", "t", microseconds(now.awake - 20s));
    service.setProperty("IdleHint", "b", 1);
    CHECK(use.becomes([](const ComputerUse& value) { return value.unusedSince.has_value(); }));
    const auto age = platform::readClocks().sinceBoot - use.current().unusedSince.value_or(0ns);
    const auto asleep = now.sinceBoot - now.awake;
    CHECK(age >= 20s);
    CHECK(age < 30s + asleep);
}

TEST_CASE("the computer is passive while nobody is logged in at it")
{
    PrivateBus bus;
    const auto service = MockService::login();
    Following<ComputerUse> use(platform::followComputerUse);
    CHECK(use.current() == ComputerUse{true, true, {}});
    SUBCASE("and a greeter is nobody")
    {
        service.addSession("c1", "seat0");
        CHECK(use.becomes(isActive));
        service.setSession("c1", "Class", "s", "greeter");
        CHECK(use.becomes(isPassive));
    }
    SUBCASE("nor one who is logged in from elsewhere")
    {
        service.addSession("c1", "seat0");
        CHECK(use.becomes(isActive));
        service.setSession("c1", "Remote", "b", 1);
        CHECK(use.becomes(isPassive));
    }
    SUBCASE("nor one who is leaving")
    {
        service.addSession("c1", "seat0");
        CHECK(use.becomes(isActive));
        service.setSession("c1", "State", "s", "closing");
        CHECK(use.becomes(isPassive));
        service.setSession("c1", "State", "s", "active");
        CHECK(use.becomes(isActive));
        service.removeSession("c1");
        CHECK(use.becomes(isPassive));
    }
}

TEST_CASE_FIXTURE(UseFixture, "the computer is passive with its lid closed, unless it has another display")
{
    Following<ComputerUse> use(platform::followComputerUse);
    CHECK(isActive(use.current()));
    service.setProperty("LidClosed", "b", 1);
    CHECK(use.becomes(isPassive));
    service.setProperty("Docked", "b", 1);
    CHECK(use.becomes(isActive));
    service.setProperty("Docked", "b", 0);
    CHECK(use.becomes(isPassive));
    service.setProperty("LidClosed", "b", 0);
    CHECK(use.becomes(isActive));
}

TEST_CASE_FIXTURE(UseFixture, "a login manager that goes leaves nothing known")
{
    Following<ComputerUse> use(platform::followComputerUse);
    CHECK(use.current().isKnown);
    service.kill();
    CHECK(use.becomes(ComputerUse{}));
}
