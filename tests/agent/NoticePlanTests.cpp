#include "agent/NoticePlan.h"
#include "scheduling/InstantDate.h"

#include <doctest/doctest.h>

using agent::BackupStatus;
using agent::Cause;
using agent::Notice;
using agent::NoticeMemory;
using agent::NoticePlan;
using scheduling::Instant;

namespace {

constexpr Instant noon = 1'767'268'800; // 2026-01-01 12:00:00
constexpr Instant hour = 3'600;
constexpr Instant day = 86'400;

BackupStatus status()
{
    BackupStatus status;
    status.now = noon;
    status.isOn = true;
    status.lastSucceeded = noon - hour;
    return status;
}

BackupStatus failedTimes(std::int64_t count, Instant last = noon - 60)
{
    auto failed = status();
    failed.failures = count;
    failed.lastEnd = last;
    failed.failure = "The backup failed: it stopped before its end.";
    return failed;
}

BackupStatus missedTimes(std::int64_t count, Instant last = noon - 60)
{
    auto missed = status();
    missed.missed = count;
    missed.lastMissed = last;
    missed.missedReasons = {"asleep"};
    return missed;
}

BackupStatus unbackedSince(Instant succeeded)
{
    auto stale = status();
    stale.lastSucceeded = succeeded;
    stale.reasons = {"battery"};
    return stale;
}

struct User {
    NoticeMemory memory;
    std::optional<Instant> next;

    std::vector<Cause> isTold(const BackupStatus& status)
    {
        memory.observe(status);
        const auto plan = NoticePlan::at(status, memory);
        next = plan.next;
        std::vector<Cause> causes;
        for (const auto& notice : plan.tell) {
            causes.push_back(notice.cause);
            memory.tell(notice, status.now);
        }
        return causes;
    }
};

using Causes = std::vector<Cause>;

} // namespace

TEST_CASE("the third failure in a row is told, the second is not")
{
    CHECK(User().isTold(failedTimes(2)).empty());
    NoticeMemory memory;
    const auto plan = NoticePlan::at(failedTimes(3), memory);
    REQUIRE(plan.tell.size() == 1);
    CHECK(plan.tell[0] == Notice{Cause::Failing, 3, {}, "The backup failed: it stopped before its end.", noon - 60});
}

TEST_CASE("further failures are told once a day")
{
    User user;
    CHECK(user.isTold(failedTimes(3)) == Causes{Cause::Failing});
    auto later = failedTimes(4, noon + hour);
    later.now = noon + day - 1;
    CHECK(user.isTold(later).empty());
    later.now = noon + day;
    CHECK(user.isTold(later) == Causes{Cause::Failing});
    later.now = noon + 3 * day;
    CHECK(user.isTold(later).empty()); // nothing has failed since
}

TEST_CASE("failures are told while backups are off too: somebody starts them by hand")
{
    auto failed = failedTimes(3);
    failed.isOn = false;
    CHECK(User().isTold(failed) == Causes{Cause::Failing});
}

TEST_CASE("three missed moments in a row are told with the reasons, two are not, and none while backups are off")
{
    CHECK(User().isTold(missedTimes(2)).empty());
    NoticeMemory memory;
    const auto plan = NoticePlan::at(missedTimes(3), memory);
    REQUIRE(plan.tell.size() == 1);
    CHECK(plan.tell[0] == Notice{Cause::Missed, 3, {"asleep"}, {}, noon - 60});
    auto off = missedTimes(3);
    off.isOn = false;
    CHECK(User().isTold(off).empty());
}

TEST_CASE("causes are counted by themselves")
{
    User user;
    CHECK(user.isTold(missedTimes(3)) == Causes{Cause::Missed});
    auto both = failedTimes(3);
    both.missed = 4;
    both.lastMissed = noon;
    CHECK(user.isTold(both) == Causes{Cause::Failing});
}

TEST_CASE("a week without a backup is told to the second, and again every day")
{
    User user;
    CHECK(user.isTold(unbackedSince(noon - 7 * day + 1)).empty());
    CHECK(user.next == noon + 1);
    auto status = unbackedSince(noon - 7 * day + 1);
    status.now = noon + 1;
    const auto plan = NoticePlan::at(status, user.memory);
    REQUIRE(plan.tell.size() == 1);
    CHECK(plan.tell[0] == Notice{Cause::Stale, 7, {"battery"}, {}, std::nullopt});
    CHECK(user.isTold(status) == Causes{Cause::Stale});
    CHECK(user.next == noon + 1 + day);
    status.now = noon + day;
    CHECK(user.isTold(status).empty());
    CHECK(user.next == noon + 1 + day);
    status.now = noon + 1 + day;
    CHECK(user.isTold(status) == Causes{Cause::Stale});
}

TEST_CASE("while backups are off nobody misses them, and nothing is waited for")
{
    User user;
    auto off = unbackedSince(noon - 30 * day);
    off.isOn = false;
    CHECK(user.isTold(off).empty());
    CHECK_FALSE(user.next);
}

TEST_CASE("backups that were switched on have a week")
{
    User user;
    auto changing = unbackedSince(noon - 30 * day);
    changing.isOn = false;
    user.isTold(changing);
    changing.isOn = true;
    changing.now = noon + hour;
    CHECK(user.isTold(changing).empty());
    CHECK(user.next == noon + hour + 7 * day);
    changing.now = noon + hour + 7 * day;
    CHECK(user.isTold(changing) == Causes{Cause::Stale});
}

TEST_CASE("where there never was a backup the week begins when they are seen to be on")
{
    User user;
    auto fresh = status();
    fresh.lastSucceeded.reset();
    CHECK(user.isTold(fresh).empty());
    CHECK(user.next == noon + 7 * day);
    fresh.now += 7 * day;
    CHECK(user.isTold(fresh) == Causes{Cause::Stale});
}

TEST_CASE("a backup that succeeds begins the week anew")
{
    User user;
    user.isTold(unbackedSince(noon - 7 * day));
    auto succeeded = status();
    succeeded.now = noon + hour;
    succeeded.lastSucceeded = noon + hour;
    CHECK(user.isTold(succeeded).empty());
    CHECK(user.next == noon + hour + 7 * day);
}

TEST_CASE("a clock that is put back makes nobody wait for a far future")
{
    User user;
    user.isTold(failedTimes(3));
    auto back = failedTimes(4, noon - 300 * day);
    back.now = noon - 300 * day;
    back.lastSucceeded = noon; // in the future
    CHECK(user.isTold(back).empty());
    CHECK(user.next == back.now + 7 * day);
    back.now += day;
    CHECK(user.isTold(back) == Causes{Cause::Failing});
}

TEST_CASE("what is remembered comes back from its dictionary, and what is senseless does not")
{
    User user;
    auto fresh = failedTimes(3);
    fresh.lastSucceeded.reset();
    fresh.missed = 5;
    user.isTold(fresh);
    REQUIRE(user.memory.onSince == noon);
    CHECK(NoticeMemory::inDictionary(user.memory.dictionary()) == user.memory);
    user.memory.wasOff = true;
    CHECK(NoticeMemory::inDictionary(user.memory.dictionary()) == user.memory);
    CHECK(NoticeMemory::inDictionary({}) == NoticeMemory());
    CHECK(NoticeMemory::inDictionary({{"OnSince", "now"}, {"Failing", 3}, {"Stale", platform::Dictionary()}})
          == NoticeMemory());
}
