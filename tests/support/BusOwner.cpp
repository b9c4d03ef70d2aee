#include "tests/support/BusOwner.h"

#include <cstdint>
#include <systemd/sd-bus.h>

pid_t ownerOfBusName(const std::string& name)
{
    sd_bus* bus = nullptr;
    sd_bus_message* reply = nullptr;
    std::uint32_t process = 0;
    const bool isFound = sd_bus_open_system(&bus) >= 0
        && sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                              "GetConnectionUnixProcessID", nullptr, &reply, "s", name.c_str())
            >= 0
        && sd_bus_message_read(reply, "u", &process) >= 0;
    sd_bus_message_unref(reply);
    sd_bus_unref(bus);
    return isFound ? static_cast<pid_t>(process) : -1;
}
