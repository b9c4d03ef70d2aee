#include "activity/model/SchedulePreview.h"

#include "protocol/Schedule.h"
#include "protocol/ScheduleRanges.h"
#include "scheduling/Scheduler.h"

#include <algorithm>
#include <optional>

using scheduling::Conditions;
using scheduling::Memory;
using scheduling::Now;
using scheduling::Reason;
using scheduling::Scheduler;

namespace {

constexpr std::size_t mostMoments = 20;

// Of what stands in the way of backups only what holds a backup that is due is told.
Conditions conditionsOf(const BackupStatus& status)
{
    const auto& reasons = status.reasons.known;
    Conditions conditions;
    conditions.battery = reasons.has(Reason::Battery);
    conditions.passive = reasons.has(Reason::Passive);
    conditions.sleepPreventers = reasons.has(Reason::SleepPreventers);
    conditions.wired = !reasons.has(Reason::NotWired);
    conditions.maintenance = reasons.has(Reason::Maintenance) || status.reasons.hasOthers;
    conditions.noProgram = status.program.empty() || reasons.has(Reason::NoProgram);
    conditions.otherBackup = status.runs();
    return conditions;
}

// What is remembered, as far as the status tells it.
Memory memoryOf(const BackupStatus& status, Now now)
{
    Memory memory = Memory::beginningAt(now.clock - 1); // an apply that changes it makes it now
    memory.lastStart = status.lastStart;
    memory.lastEnd = status.lastEnd;
    memory.lastSucceeded = status.lastSucceeded;
    memory.failures = status.failures;
    memory.settled = status.due ? std::min(*status.due - 1, now.clock) : now.clock;
    return memory;
}

// The same moments under another suspension.
std::vector<scheduling::Upcoming> marked(std::vector<scheduling::Upcoming> upcoming, const scheduling::Plan& plan)
{
    for (auto& moment : upcoming)
        moment.suspended = plan.suspension.holdsAt(plan.local, moment.at);
    return upcoming;
}

CalendarEntry plain(CalendarEntry entry)
{
    constexpr std::int64_t sunday = 7; // 0 is Sunday too
    if (!entry.weekday && !entry.day && !entry.hour)
        return entry; // no moment
    if (entry.weekday == 0)
        entry.weekday = sunday;
    entry.hour = entry.hour.value_or(0);
    entry.minute = entry.minute.value_or(0);
    return entry;
}

// Without what has no effect, and with what missing values stand for.
Schedule plain(Schedule schedule)
{
    if (!schedule.schedulesBackups()) {
        Schedule off;
        off.snapshots = schedule.schedulesSnapshots();
        return off;
    }
    if (schedule.mode == OperationModeInterval)
        schedule.interval.count = ScheduleRanges::intervalCount.clamp(schedule.interval.count);
    else
        schedule.interval = {};
    if (schedule.mode == OperationModeCalendarIntervals) {
        for (auto& entry : schedule.entries)
            entry = plain(entry);
    } else {
        schedule.entries.clear();
        schedule.asap = false;
    }
    schedule.suspension = schedule.suspend ? schedule.suspension.value_or(SuspensionTimes()) : SuspensionTimes();
    return schedule;
}

} // namespace

bool meanTheSame(const ScheduleSettings& one, const ScheduleSettings& other)
{
    return plain(Schedule::fromRecord(one)) == plain(Schedule::fromRecord(other));
}

SchedulePreview previewOf(const ScheduleSettings& edited, const ScheduleSettings& applied, const BackupStatus& status,
                          Now now)
{
    SchedulePreview preview;
    const auto zone = platform::TimeZone::named(status.zone);
    if (!zone)
        return preview;
    Scheduler scheduler(applied, *zone, conditionsOf(status), memoryOf(status, now), now);
    scheduler.apply(edited, now);
    const bool beginsAfresh = scheduler.memory().since == now.clock;
    preview.isOn = scheduler.plan().isOn();
    preview.missesEntries = scheduler.missesEntriesInSuspension();
    if (!preview.isOn)
        return preview;
    if (beginsAfresh) {
        preview.upcoming = scheduling::upcomingMoments(scheduler, now, mostMoments);
        preview.startsAtOnce = scheduler.look(now).shouldStart();
    } else {
        preview.upcoming = marked(status.upcoming, scheduler.plan());
        preview.startsAtOnce = status.due && *status.due <= now.clock && scheduler.rules().reasonsAt(now.clock).empty();
    }
    return preview;
}

bool missesEntries(const ScheduleSettings& record)
{
    const auto zone = platform::TimeZone::named("UTC");
    return zone && Scheduler(record, *zone, {}, {}).missesEntriesInSuspension();
}
