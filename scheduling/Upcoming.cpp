#include "scheduling/Upcoming.h"

#include "scheduling/Scheduler.h"

#include <algorithm>

namespace scheduling {

namespace {

Upcoming marked(const Plan& plan, Instant at, bool shifted)
{
    return {at, plan.suspension.holdsAt(plan.local, at), shifted, plan.local.isRepeatedAt(at)};
}

std::vector<Upcoming> ofCalendar(const Scheduler& scheduler, Now now, std::size_t count)
{
    const Plan& plan = scheduler.plan();
    std::vector<Upcoming> upcoming;
    Instant after = std::max(now.clock, scheduler.memory().settled);
    while (upcoming.size() < count) {
        const auto moment = plan.calendar.next(plan.local, after);
        if (!moment)
            break;
        upcoming.push_back(marked(plan, moment->at, plan.local.localAt(moment->at) != moment->local));
        after = moment->at;
    }
    return upcoming;
}

std::vector<Upcoming> ofInterval(Scheduler ahead, Now now, std::size_t count)
{
    std::vector<Upcoming> upcoming;
    while (upcoming.size() < count) {
        const IntervalMoment moment = ahead.rules().intervalMoment();
        if (moment.at > now.clock)
            upcoming.push_back(marked(ahead.plan(), moment.at, moment.shifted));
        const Instant start = std::max(moment.at, now.clock);
        now = {start, now.elapsed + start - now.clock};
        ahead.started(Scheduler::Start::Scheduled, now);
        ahead.ended(true, now);
    }
    return upcoming;
}

} // namespace

std::vector<Upcoming> upcomingMoments(const Scheduler& scheduler, Now now, std::size_t count)
{
    const Plan& plan = scheduler.plan();
    if (!plan.isOn())
        return {};
    if (plan.isCalendar())
        return ofCalendar(scheduler, now, count);
    if (!plan.isWhenInactive())
        return ofInterval(scheduler, now, count);
    const auto moment = scheduler.rules().inactiveMoment(now);
    if (!moment || *moment <= now.clock || count == 0)
        return {};
    return {marked(plan, *moment, false)};
}

} // namespace scheduling
