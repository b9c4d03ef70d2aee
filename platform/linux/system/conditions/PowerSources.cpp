#include "platform/PowerSources.h"

#include "platform/linux/system/conditions/ConditionsBus.h"
#include "platform/linux/system/conditions/DeviceEvents.h"
#include "platform/linux/system/conditions/PowerSupplies.h"
#include "platform/linux/system/conditions/SystemFiles.h"
#include "platform/linux/system/conditions/ThreadCondition.h"

#include <sys/inotify.h>

namespace platform {

namespace {

constexpr const char* UPower = "org.freedesktop.UPower";
constexpr const char* Object = "/org/freedesktop/UPower";

// The power service's word where there is one, else the kernel's. A sandbox's own supplies are plain files.
class PowerFollower {
public:
    explicit PowerFollower(ValueTeller<PowerState>& teller) : _teller(teller)
    {
        const auto folder = machinePath(PowerSupplyFolder);
        if (folder != PowerSupplyFolder) {
            followFiles(folder);
            publishSupplies();
            return;
        }
        _devices.emplace(std::initializer_list<const char*>{"power_supply"}, [this] { _service->startReading(); });
        _service.emplace(UPower, std::vector<std::string>{propertiesChanged(Object)}, [this] { read(); });
        _service->follow();
    }

private:
    void read()
    {
        const auto take = [this](sd_bus_message* answer) {
            int onBattery = 0;
            if (answer && sd_bus_message_read(answer, "v", "b", &onBattery) > 0)
                _teller.publish({.isKnown = true, .onBattery = onBattery != 0});
            else
                publishSupplies();
            _service->finishReading();
        };
        _service->call(Object, "org.freedesktop.DBus.Properties", "Get", {UPower, "OnBattery"}, take,
                       BusService::Activation::Allowed);
    }

    void publishSupplies() { _teller.publish(powerStateOfSupplies()); }

    void followFiles(const std::string& folder)
    {
        constexpr std::uint32_t mask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_DELETE;
        const auto changed = [this](const inotify_event&) { publishSupplies(); };
        auto& thread = ConditionsThread::shared();
        _files.push_back(thread.watchFile(folder, mask, changed));
        for (const auto& name : namesInFolder(folder))
            _files.push_back(thread.watchFile(folder + "/" + name, mask, changed));
    }

    ValueTeller<PowerState>& _teller;
    std::vector<EventSource> _files;
    std::optional<DeviceEvents> _devices;
    std::optional<BusService> _service;
};

} // namespace

std::optional<bool> supportsBatteryPower()
{
    return hasBatterySupply();
}

FollowedCondition<PowerState> followPowerState(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return ThreadCondition<PowerState, PowerFollower>::follow(std::move(queue), std::move(handler));
}

} // namespace platform
