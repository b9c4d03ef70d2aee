#include "helper/update/AutomaticUpdates.h"

#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <thread>

using namespace helper;

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto checkInterval = 40ms;

bool waitFor(const std::atomic<int>& attempts, int count)
{
    for (const auto end = Clock::now() + 20s; attempts < count && Clock::now() < end;)
        std::this_thread::sleep_for(1ms);
    return attempts >= count;
}

} // namespace

TEST_CASE("automatic updates are not tried before they are on, and then again and again, never before the time")
{
    std::atomic<int> attempts = 0;
    AutomaticUpdates updates(checkInterval, [&] {
        ++attempts;
        return true;
    });
    std::this_thread::sleep_for(3 * checkInterval);
    CHECK(attempts == 0);
    const auto begin = Clock::now();
    updates.setEnabled(true);
    CHECK(waitFor(attempts, 1));
    CHECK(Clock::now() - begin >= checkInterval);
    CHECK(waitFor(attempts, 3));
    CHECK(Clock::now() - begin >= 3 * checkInterval);
}

TEST_CASE("automatic updates that are switched off are not tried anymore, until they are on again")
{
    std::atomic<int> attempts = 0;
    AutomaticUpdates updates(checkInterval, [&] {
        ++attempts;
        return true;
    });
    updates.setEnabled(true);
    updates.setEnabled(true); // which it is already
    REQUIRE(waitFor(attempts, 1));
    updates.setEnabled(false);
    std::this_thread::sleep_for(5 * checkInterval); // one may be under way
    const int before = attempts;
    std::this_thread::sleep_for(4 * checkInterval);
    CHECK(attempts == before);
    updates.setEnabled(true);
    CHECK(waitFor(attempts, before + 1));
}

TEST_CASE("the end of automatic updates does not wait for their next time, but for an attempt that is being made")
{
    const auto begin = Clock::now();
    {
        AutomaticUpdates updates(std::chrono::hours(24), [] { return true; });
        updates.setEnabled(true);
    }
    CHECK(Clock::now() - begin < 10s);

    std::atomic<bool> isTrying = false;
    std::atomic<bool> isDone = false;
    {
        AutomaticUpdates updates(1ms, [&] {
            isTrying = true;
            std::this_thread::sleep_for(100ms);
            isDone = true;
            return false;
        });
        updates.setEnabled(true);
        while (!isTrying)
            std::this_thread::sleep_for(1ms);
    }
    CHECK(isDone);
}

TEST_CASE("automatic updates can be switched while an attempt is being made, and nobody waits for it")
{
    std::atomic<bool> goOn = false;
    std::atomic<int> attempts = 0;
    AutomaticUpdates updates(1ms, [&] {
        ++attempts;
        while (!goOn)
            std::this_thread::sleep_for(1ms);
        return false;
    });
    updates.setEnabled(true);
    REQUIRE(waitFor(attempts, 1));
    updates.setEnabled(false);
    CHECK(attempts == 1);
    goOn = true;
    std::this_thread::sleep_for(50ms);
    CHECK(attempts == 1);
}

TEST_CASE("automatic updates that were off for a while wait for their time again")
{
    constexpr auto longer = 300ms;
    std::atomic<int> attempts = 0;
    AutomaticUpdates updates(longer, [&] {
        ++attempts;
        return true;
    });
    updates.setEnabled(true);
    updates.setEnabled(false);
    std::this_thread::sleep_for(longer + 50ms);
    const auto begin = Clock::now();
    updates.setEnabled(true);
    CHECK(waitFor(attempts, 1));
    CHECK(Clock::now() - begin >= longer);
}
