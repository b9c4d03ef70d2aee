#include "platform/PowerSources.h"
#include "tests/conditions/Following.h"
#include "tests/conditions/MockService.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <filesystem>

using platform::PowerState;

namespace {

constexpr PowerState mains{.isKnown = true, .onBattery = false};
constexpr PowerState battery{.isKnown = true, .onBattery = true};

struct SupplyFixture {
    SupplyFixture()
    {
        set("AC/type", "Mains");
        set("AC/online", "1");
        set("BAT0/type", "Battery");
        set("BAT0/status", "Charging");
    }
    void set(const std::string& file, const std::string& text) const
    {
        root.write("sys/class/power_supply/" + file, text + "\n");
    }
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
};

} // namespace

TEST_CASE("the power service says whether the machine is on battery, and each change")
{
    PrivateBus bus;
    const auto service = MockService::power(true);
    Following<PowerState> state(platform::followPowerState);
    CHECK(state.current() == battery);
    service.setProperty("OnBattery", "b", 0);
    CHECK(state.becomes(mains));
    service.setProperty("OnBattery", "b", 1);
    CHECK(state.becomes(battery));
    CHECK(state.told() == 2);
}

TEST_CASE("without a power service the kernel's supplies count, and a service that comes later is asked")
{
    PrivateBus bus;
    Following<PowerState> state(platform::followPowerState);
    CHECK_FALSE(state.current().onBattery); // where tests run
    auto service = MockService::power(true);
    CHECK(state.becomes(battery));
    service.kill();
    CHECK(state.becomes([](const PowerState& value) { return !value.onBattery; }));
}

TEST_CASE("a bus that was restarted is followed again")
{
    PrivateBus bus;
    auto first = std::make_unique<MockService>(MockService::power(true));
    Following<PowerState> state(platform::followPowerState);
    CHECK(state.current() == battery);
    bus.restart();
    CHECK(state.becomes([](const PowerState& value) { return !value.onBattery; }));
    first.reset();
    const auto second = MockService::power(true);
    CHECK(state.becomes(battery));
}

TEST_CASE("without a bus the kernel's supplies count")
{
    const EnvironmentVariable none("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const auto start = std::chrono::steady_clock::now();
    Following<PowerState> state(platform::followPowerState);
    CHECK_FALSE(state.current().onBattery);
    CHECK(std::chrono::steady_clock::now() - start < std::chrono::seconds(10)); // a bus is waited for longer
}

TEST_CASE_FIXTURE(SupplyFixture, "a sandbox's plug is pulled and put in again")
{
    Following<PowerState> state(platform::followPowerState);
    CHECK(state.current() == mains);
    set("AC/online", "0");
    CHECK(state.becomes(battery));
    set("AC/online", "1");
    CHECK(state.becomes(mains));
}

TEST_CASE_FIXTURE(SupplyFixture, "where no mains tells of itself the battery that empties counts")
{
    std::filesystem::remove_all(root.file("sys/class/power_supply/AC"));
    Following<PowerState> state(platform::followPowerState);
    CHECK(state.current() == mains);
    set("BAT0/status", "Discharging");
    CHECK(state.becomes(battery));
    set("BAT0/scope", "Device");
    CHECK(state.becomes(mains));
}

TEST_CASE_FIXTURE(SupplyFixture, "a machine without a battery is not on battery however its mains is")
{
    std::filesystem::remove_all(root.file("sys/class/power_supply/BAT0"));
    set("AC/online", "0");
    CHECK(Following<PowerState>(platform::followPowerState).current() == mains);
}
