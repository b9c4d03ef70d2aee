#include "platform/PowerSources.h"
#include "platform/SystemInformation.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <filesystem>

namespace {

struct PowerFixture {
    PowerFixture() { std::filesystem::create_directories(_root.file("sys/class/power_supply")); }

    void addSupply(const std::string& name, const std::string& type, const std::string& scope = "") const
    {
        _root.write("sys/class/power_supply/" + name + "/type", type + "\n");
        if (!scope.empty())
            _root.write("sys/class/power_supply/" + name + "/scope", scope + "\n");
    }

    TemporaryDirectory _root;
    EnvironmentVariable _variable{"BREVANE_ROOT", _root.path()};
};

} // namespace

TEST_CASE_FIXTURE(PowerFixture, "a machine without power supplies or with mains alone has no battery")
{
    CHECK(platform::supportsBatteryPower() == false);
    addSupply("AC", "Mains");
    addSupply("ucsi-source-psy", "USB");
    CHECK(platform::supportsBatteryPower() == false);
}

TEST_CASE_FIXTURE(PowerFixture, "a machine's own battery counts, one of a mouse or headset does not")
{
    addSupply("hidpp_battery_0", "Battery", "Device");
    CHECK(platform::supportsBatteryPower() == false);
    addSupply("BAT0", "Battery");
    CHECK(platform::supportsBatteryPower() == true);
}

TEST_CASE_FIXTURE(PowerFixture, "a battery of the system's scope counts, an uninterruptible supply is no battery")
{
    addSupply("ups", "UPS");
    CHECK(platform::supportsBatteryPower() == false);
    addSupply("BAT1", "Battery", "System");
    CHECK(platform::supportsBatteryPower() == true);
}

TEST_CASE("a sandbox without power supplies of its own has the machine's")
{
    TemporaryDirectory root;
    EnvironmentVariable variable("BREVANE_ROOT", root.path());
    CHECK(platform::supportsBatteryPower().has_value() == platform::fileExists("/sys/class/power_supply"));
}
