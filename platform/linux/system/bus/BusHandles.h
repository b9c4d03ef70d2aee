#pragma once

#include <memory>
#include <systemd/sd-bus.h>

namespace platform {

struct BusDeleter {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct BusMessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
struct BusSlotDeleter {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};

// sd-bus counts references without atomics: whoever shares a bus between threads also takes, copies and drops its
// messages and slots under the lock of that bus.
using BusHandle = std::unique_ptr<sd_bus, BusDeleter>;
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusSlotDeleter>;

// What a call came to; without a name when it did not fail, or failed without a reply.
struct BusError {
    BusError() = default;
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { sd_bus_error_free(&error); }

    sd_bus_error error{};
};

} // namespace platform
