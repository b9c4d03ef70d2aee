#include "helper/enforcement/MachineConditions.h"

namespace helper {

MachineConditions::MachineConditions(const std::shared_ptr<platform::Queue>& queue,
                                     const std::function<void()>& changed)
    : _power(platform::followPowerState(queue, changed)),
      _use(platform::followComputerUse(queue, changed)),
      _sleepPreventers(platform::followSleepPreventers(queue, changed)),
      _route(platform::followNetworkRoute(queue, changed)),
      _lock(platform::followBackupLock(queue, changed))
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
    // That a lock is free is told a moment later than the end of whoever held it.
    conditions.otherBackup = _lock->current().isHeld && platform::isBackupLockHeld();
    conditions.unusedSince.reset();
    if (use.unusedSince)
        conditions.unusedSince = clocks.elapsedAt(*use.unusedSince);
}

} // namespace helper
