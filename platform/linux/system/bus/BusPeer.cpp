#include "platform/linux/system/bus/BusPeer.h"

#include "platform/linux/system/bus/SystemBus.h"

namespace platform {

namespace {

constexpr std::uint64_t AnswerLimit = 5'000'000; // microseconds

} // namespace

std::optional<std::uint32_t> processOfBusPeer(const std::string& uniqueName)
{
    const std::shared_ptr<SystemBus> bus = SystemBus::current();
    if (!bus)
        return std::nullopt;
    std::optional<std::uint32_t> process;
    const auto compose = [&](sd_bus* on, sd_bus_message** made) {
        const int result = sd_bus_message_new_method_call(on, made, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                          "org.freedesktop.DBus", "GetConnectionUnixProcessID");
        return result < 0 ? result : sd_bus_message_append(*made, "s", uniqueName.c_str());
    };
    const auto complete = [&](const SystemBus::Answer& answer) -> SystemBus::Task {
        std::uint32_t number = 0;
        if (answer.reply && sd_bus_message_read(answer.reply, "u", &number) >= 0)
            process = number;
        return nullptr;
    };
    if (const auto call = bus->beginCall(&process, compose, complete, AnswerLimit))
        bus->wait(*call);
    return process;
}

} // namespace platform
