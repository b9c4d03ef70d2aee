#include "helper/enforcement/MachineConditions.h"

namespace helper {

MachineConditions::MachineConditions(const std::shared_ptr<platform::Queue>& queue,
                                     const std::function<void()>& changed)
    : _power(platform::followPowerState(queue, changed)),
      _use(platform::followComputerUse(queue, changed)),
      _sleepPreventers(platform::followSleepPreventers(queue, changed)),
      _route(platform::followNetworkRoute(queue, changed)),
      _backup(platform::followRunningBackup(queue, changed))
{
}

void MachineConditions::read(scheduling::Conditions& conditions, const Clocks& clocks) const
{
    const auto use = _use->current();
    conditions.battery = _power->current().onBattery;
    // Where the system tells of no supplies, its word about the power is enough.
    conditions.hasBattery = platform::supportsBatteryPower().value_or(true);
    conditions.passive = use.isKnown && use.isPassive;
    conditions.sleepPreventers = !_sleepPreventers->current().names.empty();
    conditions.wired = _route->current().isWired;
    // That a backup has ended is told a moment later.
    conditions.otherBackup = _backup->current().isRunning && platform::isBackupRunning();
    conditions.unusedSince.reset();
    if (use.unusedSince)
        conditions.unusedSince = clocks.elapsedAt(*use.unusedSince);
}

} // namespace helper
