#include "platform/linux/system/bus/ServiceProbe.h"

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/bus/ServiceMessage.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace platform {

namespace {

class BusServiceProbe final : public ServiceProbe {
public:
    BusServiceProbe(BusHandle bus, std::uint64_t microseconds) : _bus(std::move(bus)), _microseconds(microseconds) { }

    pid_t owner(const std::string& serviceName) override
    {
        const auto reply = callDaemon("GetConnectionUnixProcessID", serviceName);
        std::uint32_t process = 0;
        if (!reply || sd_bus_message_read(reply.get(), "u", &process) < 0)
            return 0;
        return static_cast<pid_t>(process);
    }

    bool answers(const std::string& serviceName, const ServiceDictionary& message) override
    {
        sd_bus_message* made = nullptr;
        if (sd_bus_message_new_method_call(_bus.get(), &made, serviceName.c_str(), servicePath(serviceName).c_str(),
                                           serviceName.c_str(), ServiceMethod)
            < 0)
            return false;
        const BusMessage request(made);
        if (sd_bus_message_set_auto_start(request.get(), 0) < 0 || appendServiceDictionary(request.get(), message) < 0)
            return false;
        return call(request.get()) != nullptr;
    }

private:
    BusMessage callDaemon(const char* method, const std::string& argument)
    {
        sd_bus_message* made = nullptr;
        if (sd_bus_message_new_method_call(_bus.get(), &made, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", method)
            < 0)
            return nullptr;
        const BusMessage request(made);
        return sd_bus_message_append(request.get(), "s", argument.c_str()) < 0 ? nullptr : call(request.get());
    }

    BusMessage call(sd_bus_message* request)
    {
        sd_bus_message* reply = nullptr;
        (void)sd_bus_call(_bus.get(), request, _microseconds, nullptr, &reply);
        return BusMessage(reply);
    }

    const BusHandle _bus;
    const std::uint64_t _microseconds;
};

} // namespace

std::expected<std::unique_ptr<ServiceProbe>, std::string> ServiceProbe::open(std::chrono::milliseconds limit)
{
    sd_bus* bus = nullptr;
    const int result = sd_bus_open_system(&bus);
    BusHandle handle(bus);
    const auto microseconds = static_cast<std::uint64_t>(limit.count()) * 1000;
    auto probe = std::make_unique<BusServiceProbe>(std::move(handle), microseconds);
    if (result < 0)
        return std::unexpected(std::string("There is no system bus: ") + std::strerror(-result) + ".");
    if (probe->owner("org.freedesktop.DBus") == 0)
        return std::unexpected(std::string("The system bus does not answer."));
    return probe;
}

} // namespace platform
