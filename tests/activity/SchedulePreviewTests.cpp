#include "activity/model/SchedulePreview.h"
#include "scheduling/InstantText.h"
#include "tests/activity/Told.h"

#include <doctest/doctest.h>

using platform::Array;
using platform::Dictionary;
using told::date;
using Texts = std::vector<std::string>;

namespace {

SchedulePreview previewOf(const ScheduleSettings& edited, const ScheduleSettings& applied, const Dictionary& reply)
{
    return previewOf(edited, applied, BackupStatus::fromReply(reply), {told::instant(told::noon), 1'000});
}

// The first moments, in Berlin, with their marks.
Texts firstOf(const SchedulePreview& preview, std::size_t count)
{
    const scheduling::LocalClock clock(*platform::TimeZone::named("Europe/Berlin"));
    Texts texts;
    for (const auto& moment : preview.upcoming) {
        if (texts.size() == count)
            break;
        texts.push_back(scheduling::localTextOfInstant(clock, moment.at) + (moment.suspended ? " suspended" : "")
                        + (moment.shifted ? " shifted" : "") + (moment.repeated ? " repeated" : ""));
    }
    return texts;
}

// A backup succeeded three hours ago.
Dictionary afterABackup()
{
    return told::replyWith({{"LastStart", date("2026-10-24T09:00:00Z")},
                            {"LastEnd", date("2026-10-24T09:05:00Z")},
                            {"LastSucceeded", date("2026-10-24T09:05:00Z")}});
}

} // namespace

TEST_CASE("records that differ in their writing alone mean the same")
{
    const auto record = told::dailyAt({9});
    CHECK(meanTheSame(record, told::with(record, "Unknown", 5)));
    CHECK(meanTheSame(record, told::with(record, "AllowBattery", 1)));
    CHECK(meanTheSame(record, told::with(record, "Interval", Dictionary())));
    CHECK_FALSE(meanTheSame(record, told::dailyAt({10})));
    CHECK_FALSE(meanTheSame(record, told::with(record, "AllowBattery", false)));
}

TEST_CASE("missing values of an entry mean what they stand for")
{
    const auto withEntry = [](const Dictionary& entry) {
        return told::with(told::dailyAt({}), "CalendarIntervals", Dictionary{{"Intervals", Array{entry}}});
    };
    CHECK(meanTheSame(told::dailyAt({9}), withEntry({{"Hour", 9}, {"Minute", 0}})));
    CHECK(meanTheSame(withEntry({{"Weekday", 0}}), withEntry({{"Weekday", 7}, {"Hour", 0}, {"Minute", 0}})));
    CHECK_FALSE(meanTheSame(withEntry({{"Weekday", 1}}), withEntry({{"Weekday", 7}})));
    CHECK_FALSE(meanTheSame(withEntry({{"Minute", 5}}), withEntry({{"Hour", 0}, {"Minute", 5}}))); // the one gives none
    CHECK(meanTheSame(told::every("Minutes", 0), told::every("Minutes", 1)));
}

TEST_CASE("what has no effect makes no difference")
{
    const auto daily = told::dailyAt({9});
    const auto hourly = told::every("Hours", 1);
    CHECK(meanTheSame(daily, told::with(daily, "Interval", Dictionary{{"Hours", 5}})));
    CHECK(meanTheSame(hourly, told::with(hourly, "CalendarIntervals", *daily.find("CalendarIntervals"))));
    CHECK(meanTheSame(daily, told::with(told::suspended(daily, 1, 2), "Suspend", false)));
    CHECK_FALSE(meanTheSame(told::suspended(daily, 1, 2), told::suspended(daily, 1, 3)));
    const auto off = told::with(daily, "Backups", false);
    CHECK(meanTheSame(off, told::with(hourly, "Backups", false)));
    CHECK(meanTheSame(off, told::with(daily, "Disabled", true)));
    CHECK_FALSE(meanTheSame(off, told::with(off, "Snapshots", true)));
    CHECK_FALSE(meanTheSame(off, daily));
}

TEST_CASE("times of day that are not applied yet have their next moments, with their marks")
{
    const auto edited = told::suspended(
        told::with(told::dailyAt({9, 23}), "CalendarIntervals",
                   Dictionary{{"Intervals", Array{Dictionary{{"Hour", 2}, {"Minute", 30}}, Dictionary{{"Hour", 9}}}}}),
        1, 6);
    const auto preview = previewOf(edited, told::every("Hours", 4), afterABackup());
    CHECK(preview.isOn);
    CHECK(preview.upcoming.size() == 20);
    CHECK(firstOf(preview, 3)
          == Texts{"2026-10-25T02:30:00+02:00 suspended repeated", "2026-10-25T09:00:00+01:00",
                   "2026-10-26T02:30:00+01:00 suspended"});
    CHECK(preview.missesEntries);
    CHECK_FALSE(preview.startsAtOnce);
}

TEST_CASE("an interval counts from the last backup, and one that is over starts a backup at once")
{
    const auto longer = previewOf(told::every("Hours", 6), told::dailyAt({9}), afterABackup());
    CHECK(firstOf(longer, 2) == Texts{"2026-10-24T17:00:00+02:00", "2026-10-24T23:00:00+02:00"});
    CHECK_FALSE(longer.startsAtOnce);
    const auto shorter = previewOf(told::every("Hours", 2), told::dailyAt({9}), afterABackup());
    CHECK(firstOf(shorter, 1) == Texts{"2026-10-24T16:00:00+02:00"});
    CHECK(shorter.startsAtOnce);
}

TEST_CASE("what is known to stand in the way of a backup keeps it from starting at once")
{
    const auto applied = told::dailyAt({9});
    const auto edited = told::every("Hours", 2);
    const auto startsAtOnce = [&](std::initializer_list<std::pair<const char*, platform::PropertyList>> values) {
        auto reply = afterABackup();
        for (const auto& [key, value] : values)
            reply.set(key, value);
        return previewOf(edited, applied, reply).startsAtOnce;
    };
    CHECK(startsAtOnce({}));
    CHECK_FALSE(startsAtOnce({{"Program", ""}}));
    CHECK_FALSE(startsAtOnce({{"State", "running"}}));
    CHECK_FALSE(startsAtOnce({{"State", "blocked"}, {"Reasons", Array{"maintenance"}}}));
    CHECK_FALSE(startsAtOnce({{"State", "blocked"}, {"Reasons", Array{"moonlight"}}}));
    CHECK(startsAtOnce({{"State", "blocked"}, {"Reasons", Array{"battery"}}})); // which is allowed
    CHECK_FALSE(previewOf(told::suspended(edited, 13, 15), applied, afterABackup()).startsAtOnce);
}

TEST_CASE("ticking that backups run on battery power starts the one that waits for it")
{
    const auto applied = told::with(told::dailyAt({13}), "AllowBattery", false);
    auto reply = afterABackup();
    reply.set("State", "blocked");
    reply.set("Due", date("2026-10-24T11:00:00Z"));
    reply.set("Reasons", Array{"battery"});
    reply.set("Upcoming", Array{Dictionary{{"At", date("2026-10-25T12:00:00Z")}}});
    const auto allowed = previewOf(told::dailyAt({13}), applied, reply);
    CHECK(allowed.startsAtOnce);
    CHECK(firstOf(allowed, 5) == Texts{"2026-10-25T13:00:00+01:00"});
    // It was due 12 hours before, and may still wait for the suspension.
    CHECK_FALSE(previewOf(told::suspended(told::dailyAt({13}), 13, 15), applied, reply).startsAtOnce);
}

TEST_CASE("conditions that change leave the moments as they are, but for their marks")
{
    auto reply = afterABackup();
    reply.set("Upcoming",
              Array{Dictionary{{"At", date("2026-10-24T21:00:00Z")}, {"Suspended", true}},
                    Dictionary{{"At", date("2026-10-25T00:30:00Z")}, {"Repeated", true}}});
    const auto applied = told::suspended(told::every("Hours", 4), 22, 2);
    CHECK(firstOf(previewOf(told::suspended(told::every("Hours", 4), 2, 3), applied, reply), 5)
          == Texts{"2026-10-24T23:00:00+02:00", "2026-10-25T02:30:00+02:00 suspended repeated"});
}

TEST_CASE("a schedule that catches up takes over a backup that is due")
{
    auto reply = afterABackup();
    reply.set("State", "blocked");
    reply.set("Due", date("2026-10-24T11:00:00Z"));
    reply.set("Reasons", Array{"sleepPreventers"});
    const auto applied = told::with(told::every("Hours", 2), "DontRunWithSleepPreventers", true);
    auto edited = told::dailyAt({9});
    CHECK_FALSE(previewOf(edited, applied, reply).startsAtOnce);
    edited.set("CalendarIntervals", Dictionary{{"Intervals", Array{Dictionary{{"Hour", 9}}}}, {"ASAP", true}});
    CHECK(previewOf(edited, applied, reply).startsAtOnce);
}

TEST_CASE("a schedule that is off, or a zone that is not known, has no moments")
{
    const auto off = previewOf(told::with(told::dailyAt({9}), "Backups", false), told::dailyAt({9}), afterABackup());
    CHECK_FALSE(off.isOn);
    CHECK(off.upcoming.empty());
    auto reply = afterABackup();
    reply.set("Zone", "Nowhere/Land");
    CHECK(previewOf(told::dailyAt({9}), told::dailyAt({10}), reply) == SchedulePreview());
}

TEST_CASE("whether entries are missed each time is known of a record alone")
{
    CHECK(missesEntries(told::suspended(told::dailyAt({9, 23}), 22, 6)));
    CHECK_FALSE(missesEntries(told::suspended(told::dailyAt({9}), 22, 6)));
    CHECK_FALSE(missesEntries(told::dailyAt({9, 23})));
    CHECK_FALSE(missesEntries({}));
}
