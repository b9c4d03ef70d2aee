#include "agent/NoticePlan.h"

#include <algorithm>

namespace agent {

using scheduling::Instant;
using scheduling::secondsPerDay;

namespace {

constexpr std::int64_t tooMany = 3; // failures, and missed moments
constexpr std::int64_t tooOld = 7 * secondsPerDay;

std::optional<NoticeMemory::Told> toldOf(Cause cause, const NoticeMemory& memory)
{
    const auto found = memory.told.find(cause);
    return found == memory.told.end() ? std::nullopt : std::optional(found->second);
}

// Not yet told, and nothing of that cause within a day.
bool isNews(const Notice& notice, const BackupStatus& status, const NoticeMemory& memory)
{
    const auto told = toldOf(notice.cause, memory);
    return !told || (told->event != notice.event && status.now - told->at >= secondsPerDay);
}

// Since when no backup has succeeded that should have.
std::optional<Instant> withoutBackupSince(const BackupStatus& status, const NoticeMemory& memory)
{
    std::optional<Instant> since = memory.onSince;
    if (status.lastSucceeded)
        since = std::max(since.value_or(*status.lastSucceeded), *status.lastSucceeded);
    return since ? std::optional(std::min(*since, status.now)) : std::nullopt;
}

} // namespace

NoticePlan NoticePlan::at(const BackupStatus& status, const NoticeMemory& memory)
{
    NoticePlan plan;
    const auto tellIfNews = [&](const Notice& notice) {
        if (isNews(notice, status, memory))
            plan.tell.push_back(notice);
    };
    if (status.failures >= tooMany)
        tellIfNews({Cause::Failing, status.failures, {}, status.failure, status.lastEnd});
    if (status.isOn && status.missed >= tooMany)
        tellIfNews({Cause::Missed, status.missed, status.missedReasons, {}, status.lastMissed});
    const auto since = withoutBackupSince(status, memory);
    if (!status.isOn || !since)
        return plan;
    const auto told = toldOf(Cause::Stale, memory);
    const auto due = std::max(*since + tooOld, told ? told->at + secondsPerDay : *since);
    if (due <= status.now)
        plan.tell.push_back({Cause::Stale, (status.now - *since) / secondsPerDay, status.reasons, {}, std::nullopt});
    plan.next = due <= status.now ? status.now + secondsPerDay : due;
    return plan;
}

} // namespace agent
