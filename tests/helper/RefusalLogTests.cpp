#include "diagnostics/log/ZRKLog.h"
#include "helper/RefusalLog.h"
#include "protocol/ErrorCodes.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <doctest/doctest.h>
#include <string>

using namespace std::chrono_literals;

using helper::RefusalLog;

namespace {

// The log of this process, in a root of its own, and two who are refused.
struct RefusalLogFixture {
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    EnvironmentVariable home{"HOME", root.file("home")};
    platform::ServicePeer asker{.name = ":1.5", .user = 7, .process = 12, .program = "/usr/bin/asker"};
    platform::ServicePeer other{.name = ":1.6", .user = 8, .process = 13, .program = ""};
    platform::Error refusal{BRVErrorDomain, BRVErrorUnknownKey, {}, nullptr};
    RefusalLog::Clock::time_point begin{1000s};
    RefusalLog log;

    RefusalLogFixture() { ZRKLogInit("com.zerkolin.brevane.tests", "refusals"); }
    std::string text() const { return contentOfFile(ZRKLogGetParentPath() + "/refusals.log"); }
    auto lines() const { return std::ranges::count(text(), '\n'); }
};

} // namespace

TEST_CASE_FIXTURE(RefusalLogFixture,
                  "a user's refusals are counted for a minute, and that after it is a first one again")
{
    log.refused(2, asker, refusal, begin);
    REQUIRE(lines() == 1);
    CHECK(text().contains("Refused message 2 of user 7, '/usr/bin/asker' (process 12): "));
    log.refused(3, asker, refusal, begin);
    log.refused(4, asker, refusal, begin + 60s - 1ns);
    log.report(begin + 60s - 1ns);
    REQUIRE(lines() == 1);
    log.refused(5, asker, refusal, begin + 60s);
    REQUIRE(lines() == 3);
    CHECK(text().contains("Refused 2 more messages of user 7, the last of '/usr/bin/asker' (process 12).\n"));
    CHECK(text().contains("Refused message 5 of user 7, "));
}

TEST_CASE_FIXTURE(RefusalLogFixture,
                  "each user's refusals have a minute of their own, and one without more says nothing at its end")
{
    log.refused(2, asker, refusal, begin);
    log.refused(2, other, refusal, begin + 30s);
    log.refused(3, other, refusal, begin + 31s);
    CHECK(lines() == 2);
    log.report(begin + 60s);
    CHECK(lines() == 2);
    log.report(begin + 90s - 1ns);
    CHECK(lines() == 2);
    log.report(begin + 90s);
    CHECK(lines() == 3);
    CHECK(text().contains("Refused 1 more messages of user 8, the last of an unknown program (process 13).\n"));
    log.reportAll();
    CHECK(lines() == 3);
}

TEST_CASE_FIXTURE(RefusalLogFixture,
                  "of a program's path the log has 256 bytes, and a question mark for what is not printable")
{
    asker.program = " ~\x1f\x7f\n\xc3";
    log.accepted(2, asker);
    CHECK(text().ends_with("Did message 2 for user 7, ' ~?"
                           "?"
                           "?"
                           "?' (process 12).\n"));
    asker.program = std::string(256, 'x') + "y";
    log.accepted(3, asker);
    CHECK(text().ends_with("Did message 3 for user 7, '" + std::string(256, 'x') + "' (process 12).\n"));
    CHECK(lines() == 2);
}

TEST_CASE_FIXTURE(RefusalLogFixture,
                  "at the end all that was counted is told once, and the next refusal is a first one")
{
    log.refused(2, asker, refusal, begin);
    log.refused(3, asker, refusal, begin + 1s);
    log.refused(2, other, refusal, begin + 1s);
    log.reportAll();
    REQUIRE(lines() == 3);
    CHECK(text().ends_with("Refused 1 more messages of user 7, the last of '/usr/bin/asker' (process 12).\n"));
    log.reportAll();
    CHECK(lines() == 3);
    log.refused(4, asker, refusal, begin + 2s);
    REQUIRE(lines() == 4);
    CHECK(text().contains("Refused message 4 of user 7, '/usr/bin/asker' (process 12): "));
}
