#include "helper/macos/timemachine/SnapshotNames.h"

#include <doctest/doctest.h>

using helper::dateOfMadeSnapshot;
using helper::isSnapshotDate;
using helper::snapshotDatesInListing;
using Dates = std::vector<std::string>;

TEST_CASE("a date of a snapshot is a day and a second of it")
{
    CHECK(isSnapshotDate("2026-11-22-093000"));
    for (const char* const text : {"2024-02-29-235960", "2000-01-01-000000", "9999-12-31-235959"})
        CHECK_MESSAGE(isSnapshotDate(text), text);
    for (const char* const text : {"",
                                   "/",
                                   "2026-11-22",
                                   "2026-11-22-09300",
                                   "2026-11-22-0930000",
                                   "2026-11-22 093000",
                                   "2026-13-22-093000",
                                   "2026-00-22-093000",
                                   "2026-11-32-093000",
                                   "2026-11-00-093000",
                                   "2026-11-22-243000",
                                   "2026-11-22-096000",
                                   "2026-11-22-093061",
                                   "2026-11-22_093000",
                                   "2026/11-22-093000",
                                   "2026-11:22-093000",
                                   "2026-1:-22-093000",
                                   "2026-11-22-09/000",
                                   "2O26-11-22-093000",
                                   "-026-11-22-093000",
                                   " 2026-11-22-09300",
                                   "2026-11-22-09300\n"})
        CHECK_FALSE_MESSAGE(isSnapshotDate(text), text);
}

TEST_CASE("a listing of names tells the dates of Time Machine's snapshots, and of no others")
{
    CHECK(snapshotDatesInListing("Snapshots for volume group containing disk /:\n"
                                 "com.apple.TimeMachine.2026-11-21-080000.local\n"
                                 "com.apple.os.update-8C5F1D2B1B4A3A1A\n"
                                 "com.example.2026-11-21-081500.local\n"
                                 "com.apple.TimeMachine.2026-11-21-090000.local\n"
                                 "com.apple.TimeMachine.2026-11-21-090000.local\n"
                                 "com.apple.TimeMachine.2026-11-21-100000.backup\n"
                                 "com.apple.TimeMachine.2026-11-21-110000")
          == Dates{"2026-11-21-080000", "2026-11-21-090000", "2026-11-21-110000"});
}

TEST_CASE("a listing of dates tells them, whatever stands around them")
{
    CHECK(snapshotDatesInListing("Snapshot dates for all disks:\r\n2026-11-21-080000\r\n  2026-11-21-090000  \n\n")
          == Dates{"2026-11-21-080000", "2026-11-21-090000"});
    CHECK(snapshotDatesInListing("\t2026-11-21-080000 \t\r\n\n \n2026-11-21-090000")
          == Dates{"2026-11-21-080000", "2026-11-21-090000"});
    CHECK(snapshotDatesInListing("2026-11-21-080000 and more\n2026-11-21-0800001\n").empty());
    CHECK(snapshotDatesInListing("").empty());
    CHECK(snapshotDatesInListing("Snapshot dates for all disks:\n").empty());
}

TEST_CASE("what makes a snapshot tells its date")
{
    CHECK(dateOfMadeSnapshot("Created local snapshot with date: 2026-11-22-093000\n") == "2026-11-22-093000");
    CHECK(dateOfMadeSnapshot("NOTE: local snapshots are considered purgeable and may be removed at any time by "
                             "deleted(8).\nCreated local snapshot with date: 2026-11-22-093000")
          == "2026-11-22-093000");
    CHECK(dateOfMadeSnapshot("  Created local snapshot with date:2026-11-22-093000") == "2026-11-22-093000");
    CHECK(dateOfMadeSnapshot("Created local snapshot with date: 2026-11-22-093000\n"
                             "Created local snapshot with date: 2026-11-22-093001\n"
                             "Created local snapshot with date: later\n")
          == "2026-11-22-093001");
    CHECK_FALSE(dateOfMadeSnapshot("Created local snapshot with date:"));
    CHECK_FALSE(dateOfMadeSnapshot("Created local snapshot with date:   "));
    CHECK_FALSE(dateOfMadeSnapshot("Created local snapshot with date: soon"));
    CHECK_FALSE(dateOfMadeSnapshot("2026-11-22-093000\n"));
    CHECK_FALSE(dateOfMadeSnapshot(""));
}

TEST_CASE("a snapshot is called after its date")
{
    CHECK(helper::nameOfSnapshot("2026-11-22-093000") == "com.apple.TimeMachine.2026-11-22-093000.local");
    CHECK(snapshotDatesInListing(helper::nameOfSnapshot("2026-11-22-093000")) == Dates{"2026-11-22-093000"});
}
