#pragma once

#include "helper/enforcement/BackupPrograms.h"
#include "helper/enforcement/Clocks.h"
#include "helper/enforcement/EnforcementState.h"
#include "helper/enforcement/MachineConditions.h"
#include "helper/enforcement/StatusNotifier.h"
#include "platform/BackupRunner.h"
#include "platform/Clock.h"
#include "platform/SleepInhibitor.h"
#include "scheduling/Scheduler.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace helper {

struct EnforcementParts {
    std::string statePath;
    ScheduleSettings record; // stored
    std::shared_ptr<BackupPrograms> program;
    // Whether an update or the uninstallation is at work. It refuses to begin while isUnderWay is true, which is set
    // before this is asked: of the two at most one goes on.
    std::function<bool()> isMaintenanceAtWork;
    std::shared_ptr<std::atomic<bool>> isUnderWay;
};

// Enforces the schedule: tells the scheduler everything that happens, starts backups when it says so, and remembers and
// tells what became of them. Everything here, its construction and its end included, is for one serial queue.
class EnforcementLoop {
public:
    EnforcementLoop(EnforcementParts parts, std::shared_ptr<platform::Queue> queue);
    ~EnforcementLoop();
    EnforcementLoop(const EnforcementLoop&) = delete;
    EnforcementLoop& operator=(const EnforcementLoop&) = delete;

    void apply(const ScheduleSettings& record);
    // Success when a backup is under way, whatever the conditions.
    platform::Result<void> startNow();
    // Something has changed that tells nothing more: looks at everything anew.
    void happen();

    platform::Dictionary status();

private:
    // What others may want to hear of.
    struct Shown {
        scheduling::State state;
        std::optional<scheduling::Instant> due;
        scheduling::Reasons reasons;
        scheduling::Memory memory;
        std::string program;
        std::string zone;
        ScheduleSettings record;
        std::optional<JournalEntry> latest;
        bool operator==(const Shown&) const = default;
    };

    scheduling::Scheduler makeScheduler();
    void catchUpWithStored(scheduling::Now now);
    void resumeBackup(scheduling::Now now, bool mayComeToLife);
    void setZone(scheduling::Now now);

    scheduling::Now catchUp();
    void clockEvent(platform::ClockEvent event);
    void wake(scheduling::Now now);
    void backupEvent(const platform::BackupEvent& event);

    void settle(scheduling::Now now);
    void readConditions(scheduling::Now now);
    void tell(const scheduling::Look& look, scheduling::Now now);
    void tell(JournalEntry entry);
    // False when maintenance has begun. A failure to start is an end like any other.
    bool start(scheduling::Scheduler::Start how, std::optional<scheduling::Instant> due, scheduling::Now now);
    std::optional<std::string> run(const std::string& identifier);
    // The reason is empty when the status says all.
    void end(std::optional<int> status, const std::string& reason, scheduling::Now now);
    void fail(const std::string& why, scheduling::Now now);
    void succeed(scheduling::Now now);
    void finish();
    void holdAwake();
    void save(scheduling::Now now);
    void notify(scheduling::Now now);

    const EnforcementParts _parts;
    Clocks _clocks;
    StateFile _file;
    EnforcementState _state; // but for what the scheduler holds
    MachineConditions _machine;
    StatusNotifier _notifier;
    std::unique_ptr<platform::BackupRunner> _runner;
    std::unique_ptr<platform::ClockTimer> _timer;     // the next look
    std::unique_ptr<platform::ClockTimer> _wakeLimit; // no sleep has followed its announcement
    std::unique_ptr<platform::ClockTimer> _lifeLimit; // a backup that was just started has to be found by then
    std::unique_ptr<platform::ClockWatch> _clockWatch;
    std::unique_ptr<platform::SleepInhibitor> _inhibitor;
    scheduling::Scheduler _scheduler;
    scheduling::Instant _present;           // since when this object follows what happens
    std::optional<std::int64_t> _startedAt; // true time; nullopt when it was started before
    std::string _failure;                   // why the last start came to nothing at once
    std::optional<Shown> _shown;
    bool _asleep = false;
};

} // namespace helper
