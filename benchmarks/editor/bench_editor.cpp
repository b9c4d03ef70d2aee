// Measures how long the main thread is busy until a record is on screen, from the call to the painted window.
//
//   bench_editor [ROUNDS]

#include "protocol/ScheduleRanges.h"
#include "tests/shell/support/EditorTest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>

// The support library's own checks need a framework to report to.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

using platform::Array;
using platform::Dictionary;

namespace {

constexpr int intervalIndex = 1;
constexpr int calendarIndex = 2;

ScheduleSettings recordWithRows(int count)
{
    Array entries;
    entries.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        entries.emplace_back(Dictionary{{"Weekday", i % 7 + 1}, {"Hour", i % 24}, {"Minute", i % 60}});
    ScheduleSettings record = completeRecordWith("BackupsMode", "CalendarIntervals");
    record.set("CalendarIntervals", Dictionary{{"Intervals", std::move(entries)}, {"ASAP", true}});
    return record;
}

double millisecondsFor(const std::function<void()>& action)
{
    const auto begin = std::chrono::steady_clock::now();
    action();
    user::runEvents();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

double residentMegabytes()
{
    std::ifstream file("/proc/self/statm");
    long pages = 0, resident = 0;
    file >> pages >> resident;
    return static_cast<double>(resident) * 4096 / 1e6;
}

void report(const char* name, double value, const char* unit)
{
    std::printf("%s %.2f %s\n", name, value, unit);
    std::fflush(stdout);
}

double showing(int rounds, int rows)
{
    std::vector<double> times;
    EditorTest editor(recordWithRows(rows));
    for (int round = 0; round < rounds; ++round)
        times.push_back(millisecondsFor([&] { editor.controller->updateSettings(); }));
    return median(times);
}

// To the calendar's rows and back; the slower of the two.
double switching(int rounds, int rows)
{
    std::vector<double> there, back;
    EditorTest editor(recordWithRows(rows));
    for (int round = 0; round < rounds; ++round) {
        back.push_back(millisecondsFor([&] { editor.user.choose("operationModePopUp", intervalIndex); }));
        there.push_back(millisecondsFor([&] { editor.user.choose("operationModePopUp", calendarIndex); }));
    }
    return std::max(median(there), median(back));
}

// As many rows as a schedule can hold.
void reportMost()
{
    const ScheduleSettings record = recordWithRows(static_cast<int>(ScheduleRanges::maximumIntervals));
    EditorTest editor(recordWithRows(1));
    const auto calendar = editor.controller->calendarIntervalsViewController();
    const double before = residentMegabytes();
    report("editor.show10000",
           millisecondsFor([&] { calendar->setSettings(record.dictionaryForKey("CalendarIntervals")); }), "ms");
    report("editor.memory10000", residentMegabytes() - before, "MB");
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    doctest::Context checks;
    checks.setAsDefaultForAssertsOutOfTestCases();
    checks.setAssertHandler([](const doctest::AssertData& check) {
        if (check.m_failed)
            std::abort();
    });
    const user::Session session(argc, argv);
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 15;
    report("editor.show500", showing(rounds, 500), "ms");
    report("editor.switch500", switching(rounds, 500), "ms");
    report("editor.switch", switching(rounds, 5), "ms");
    reportMost();
    return 0;
}
