#include "tests/support/PrivateBus.h"

#include <doctest/doctest.h>
#include <systemd/sd-bus.h>

TEST_CASE("a private bus answers at its address, dies when killed and comes back at the same address")
{
    PrivateBus bus;
    sd_bus* connection = nullptr;
    REQUIRE(sd_bus_open_system(&connection) >= 0);
    const char* name = nullptr;
    CHECK(sd_bus_get_unique_name(connection, &name) >= 0);
    sd_bus_unref(connection);

    bus.kill();
    connection = nullptr;
    CHECK(sd_bus_open_system(&connection) < 0);

    bus.restart();
    REQUIRE(sd_bus_open_system(&connection) >= 0);
    CHECK(sd_bus_get_unique_name(connection, &name) >= 0);
    sd_bus_unref(connection);
}
