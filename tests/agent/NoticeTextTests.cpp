#include "agent/NoticeText.h"

#include <doctest/doctest.h>

using agent::Cause;
using agent::NoticeText;

TEST_CASE("failures are told with their number and the journal's sentence")
{
    const auto text = NoticeText::of({Cause::Failing, 4, {}, "The backup failed: it stopped before its end.", {}});
    CHECK(text.title == "Backups are failing.");
    CHECK(text.body == "The last 4 backups failed. The journal says: The backup failed: it stopped before its end.");
    CHECK(NoticeText::of({Cause::Failing, 3, {}, "", {}}).body == "The last 3 backups failed.");
}

TEST_CASE("missed moments are told with their number and all the reasons, in their order")
{
    const auto text = NoticeText::of({Cause::Missed, 3, {"asleep", "battery", "of no meaning"}, {}, {}});
    CHECK(text.title == "Backups are being missed.");
    CHECK(text.body == "The last 3 scheduled backups were not made. The reason: battery power, sleep of the computer.");
}

TEST_CASE("a time without backups is told in days, with what stands in the way")
{
    const auto text = NoticeText::of({Cause::Stale, 8, {"noProgram"}, {}, {}});
    CHECK(text.title == "There is no recent backup.");
    CHECK(text.body == "For 8 days no backup has succeeded. The reason: no backup program, or one that is not there.");
    CHECK(NoticeText::of({Cause::Stale, 7, {}, {}, {}}).body == "For 7 days no backup has succeeded.");
}

TEST_CASE("every reason that there is has words")
{
    for (const char* const name : {"suspended", "battery", "passive", "sleepPreventers", "notWired", "running",
                                   "maintenance", "noProgram", "asleep"})
        CHECK(NoticeText::of({Cause::Missed, 3, {name}, {}, {}}).body.find("The reason: ") != std::string::npos);
}
