#include "helper/enforcement/StatusReply.h"

#include "platform/Texts.h"
#include "protocol/BackupStatus.h"
#include "scheduling/InstantText.h"
#include "scheduling/Scheduler.h"
#include "scheduling/Upcoming.h"

namespace helper {

using platform::Dictionary;
using scheduling::Scheduler;

namespace {

constexpr std::size_t mostUpcoming = 20;

// Of a schedule that is off, the moments that it would have.
Scheduler switchedOn(Scheduler scheduler, scheduling::Now now)
{
    if (!scheduler.plan().isOn()) {
        auto record = scheduler.record();
        record.set(ScheduleKey::Backups, true);
        record.remove(ScheduleKey::Disabled);
        scheduler.apply(std::move(record), now);
    }
    return scheduler;
}

platform::Array upcoming(const Scheduler& scheduler, scheduling::Now now)
{
    platform::Array array;
    for (const auto& moment : scheduling::upcomingMoments(switchedOn(scheduler, now), now, mostUpcoming)) {
        array.emplace_back(
            Dictionary{{BackupStatusKey::At, dateOf(moment.at)},
                       {BackupStatusKey::Local, scheduling::localTextOfInstant(scheduler.plan().local, moment.at)},
                       {BackupStatusKey::Suspended, moment.suspended},
                       {BackupStatusKey::Shifted, moment.shifted},
                       {BackupStatusKey::Repeated, moment.repeated}});
    }
    return array;
}

} // namespace

Dictionary statusReply(const Scheduler& scheduler, scheduling::Now now, const Journal& journal,
                       const std::string& program, const std::vector<std::string>& notes)
{
    const auto status = scheduler.status(now);
    const auto& memory = scheduler.memory();
    const auto reasons = namesOf(status.reasons);
    Dictionary reply{{BackupStatusKey::Now, dateOf(now.clock)},
                     {BackupStatusKey::Zone, scheduler.plan().local.zone().name()},
                     {BackupStatusKey::State, scheduling::stateName(status.state)},
                     {BackupStatusKey::Reasons, platform::Array(reasons.begin(), reasons.end())},
                     {BackupStatusKey::Failures, memory.failures},
                     {BackupStatusKey::Upcoming, upcoming(scheduler, now)},
                     {BackupStatusKey::Journal, journal.array()}};
    scheduling::setDate(reply, BackupStatusKey::Due, status.due);
    scheduling::setDate(reply, BackupStatusKey::LastStart, memory.lastStart);
    scheduling::setDate(reply, BackupStatusKey::LastEnd, memory.lastEnd);
    scheduling::setDate(reply, BackupStatusKey::LastSucceeded, memory.lastSucceeded);
    if (!program.empty())
        reply.set(BackupStatusKey::Program, program);
    if (!notes.empty())
        reply.set(BackupStatusKey::Notes, platform::arrayOf(notes));
    return reply;
}

} // namespace helper
