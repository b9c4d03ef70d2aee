// How long the next moment of 10,000 entries takes, from the record, and a simulation of 20 years of 10 entries a day.
// Medians over the rounds.

#include "helper/simulation/Simulation.h"
#include "scheduling/Scheduler.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using platform::Array;
using platform::Dictionary;

namespace {

constexpr int rounds = 15;
constexpr int simulations = 3;
constexpr scheduling::Instant begin = 1'735'689'600; // 2025-01-01
constexpr std::int64_t twentyYears = 7'305 * scheduling::secondsPerDay;

template <class Work>
double medianMilliseconds(int count, Work work)
{
    std::vector<double> times;
    for (int round = 0; round < count; ++round) {
        const auto from = std::chrono::steady_clock::now();
        work();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - from).count());
    }
    std::nth_element(times.begin(), times.begin() + count / 2, times.end());
    return times[static_cast<std::size_t>(count / 2)];
}

ScheduleSettings calendar(Array entries)
{
    const Dictionary subRecord{{"Intervals", std::move(entries)}, {"ASAP", false}};
    return {{"Backups", true}, {"BackupsMode", "CalendarIntervals"}, {"CalendarIntervals", subRecord}};
}

// Entries of every kind, none of them on most days.
Schedule scheduleOfManyEntries()
{
    Array entries;
    for (int number = 0; number < 10'000; ++number)
        entries.emplace_back(Dictionary{
            {"Day", 1 + number % 31}, {"Weekday", 1 + number % 7}, {"Hour", number % 24}, {"Minute", number * 7 % 60}});
    return Schedule::fromRecord(calendar(std::move(entries)));
}

double firstMoment(const platform::TimeZone& zone)
{
    const Schedule schedule = scheduleOfManyEntries();
    return medianMilliseconds(rounds, [&] {
        const scheduling::Plan plan(schedule, zone);
        if (!plan.calendar.next(plan.local, begin))
            std::puts("SKIPPED: the entries give no moment");
    });
}

double nextMoment(const platform::TimeZone& zone)
{
    constexpr int moments = 1'000;
    const scheduling::Plan plan(scheduleOfManyEntries(), zone);
    scheduling::Instant after = begin;
    return medianMilliseconds(rounds,
                              [&] {
                                  for (int number = 0; number < moments; ++number)
                                      after = plan.calendar.next(plan.local, after)->at;
                              })
        / moments;
}

double simulation(const platform::TimeZone& zone, std::size_t& lines)
{
    Array entries;
    for (int number = 0; number < 10; ++number)
        entries.emplace_back(Dictionary{{"Hour", 2 * number}, {"Minute", 30}});
    const auto record = calendar(std::move(entries));
    return medianMilliseconds(simulations, [&] {
        helper::SimulationScript script{.record = record, .zone = zone};
        script.from = begin;
        script.length = twentyYears;
        script.duration = 60;
        lines = 0;
        helper::Simulation(std::move(script), [&lines](const std::string&) { ++lines; }).run();
    });
}

} // namespace

int main()
{
    const auto zone = platform::TimeZone::named("Europe/Berlin");
    if (!zone) {
        std::puts("SKIPPED: the system does not know the zone Europe/Berlin");
        return 0;
    }
    std::size_t lines = 0;
    std::printf("scheduling.first %.4f ms\n", firstMoment(*zone));
    std::printf("scheduling.next %.6f ms\n", nextMoment(*zone));
    std::printf("scheduling.years %.1f ms\n", simulation(*zone, lines));
    std::printf("scheduling.lines %zu lines\n", lines);
}
