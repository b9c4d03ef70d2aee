#include "helper/enforcement/StatusReply.h"

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
        array.emplace_back(Dictionary{{"At", dateOf(moment.at)},
                                      {"Local", scheduling::localTextOfInstant(scheduler.plan().local, moment.at)},
                                      {"Suspended", moment.suspended},
                                      {"Shifted", moment.shifted},
                                      {"Repeated", moment.repeated}});
    }
    return array;
}

void setDate(Dictionary& reply, const char* key, std::optional<scheduling::Instant> instant)
{
    if (instant)
        reply.set(key, dateOf(*instant));
}

} // namespace

Dictionary statusReply(const Scheduler& scheduler, scheduling::Now now, const Journal& journal,
                       const std::string& program)
{
    const auto status = scheduler.status(now);
    const auto& memory = scheduler.memory();
    const auto reasons = namesOf(status.reasons);
    Dictionary reply{{"Now", dateOf(now.clock)},
                     {"Zone", scheduler.plan().local.zone().name()},
                     {"State", scheduling::stateName(status.state)},
                     {"Reasons", platform::Array(reasons.begin(), reasons.end())},
                     {"Failures", memory.failures},
                     {"Upcoming", upcoming(scheduler, now)},
                     {"Journal", journal.array()}};
    setDate(reply, "Due", status.due);
    setDate(reply, "LastStart", memory.lastStart);
    setDate(reply, "LastEnd", memory.lastEnd);
    setDate(reply, "LastSucceeded", memory.lastSucceeded);
    if (!program.empty())
        reply.set("Program", program);
    return reply;
}

} // namespace helper
