#include "diagnostics/log/ZRKLog.h"
#include "helper/postupdate/PostUpdate.h"
#include "tests/helper/RunningHelper.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <cstddef>
#include <doctest/doctest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using helper::PostUpdate;
using helper::VersionNumber;
using Outcome = PostUpdate::Outcome;

using namespace std::chrono_literals;

namespace {

// What is seen of the installation from one change to the next.
struct Seen {
    const char* version; // null: there is none
    bool isOnTrial = false;
};

// An installation that changes as it is told, and an application that goes away at the last change.
class PlayedWatch final : public helper::ProductWatch {
public:
    PlayedWatch(std::vector<Seen> seen, std::string& calls, bool canStart = true)
        : _seen(std::move(seen)),
          _calls(calls),
          _canStart(canStart)
    {
    }

    std::optional<VersionNumber> installedVersion() const override
    {
        const char* const version = _seen[_at].version;
        return version ? VersionNumber::parse(version) : std::nullopt;
    }
    bool isOnTrial() const override { return _seen[_at].isOnTrial; }
    bool waitForChange(Clock::time_point) override
    {
        _calls += "wait ";
        _at += _at + 1 < _seen.size() ? 1 : 0;
        return _at + 1 < _seen.size();
    }
    void endApplication() override { _calls += "end "; }
    bool startApplication() override
    {
        _calls += "start ";
        return _canStart;
    }

private:
    const std::vector<Seen> _seen;
    std::size_t _at = 0;
    std::string& _calls;
    const bool _canStart;
};

// A machine without a helper, and the log of this process.
struct WithoutHelper {
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    EnvironmentVariable home{"HOME", root.file("home")};
    EnvironmentVariable bus{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + root.file("none")};
    std::string calls;

    WithoutHelper() { ZRKLogInit("com.zerkolin.brevane.tests", "updated"); }

    Outcome run(const std::vector<Seen>& seen, bool canStart = true)
    {
        return PostUpdate(std::make_unique<PlayedWatch>(seen, calls, canStart), 100ms).run();
    }
    std::string log() const { return contentOfFile(ZRKLogGetParentPath() + "/updated.log"); }
};

} // namespace

TEST_CASE_FIXTURE(WithoutHelper, "without a newer version nothing is ended or started")
{
    SUBCASE("because the application goes away first")
    {
        CHECK(run({{"1.0"}, {"1.0"}}) == Outcome::NoNewVersion);
        CHECK(calls == "wait ");
    }
    SUBCASE("because an older one is there, the same again, or none")
    {
        CHECK(run({{"1.0"}, {"0.9"}, {"1.0"}, {nullptr}, {"1.0.0"}}) == Outcome::NoNewVersion);
        CHECK(calls == "wait wait wait wait ");
    }
    SUBCASE("because the old one is back after the trial of the new one")
    {
        CHECK(run({{"1.0"}, {"2.0", true}, {"2.0", true}, {"1.0"}, {"1.0"}}) == Outcome::NoNewVersion);
        CHECK(calls == "wait wait wait ");
    }
    CHECK(log().empty());
}

TEST_CASE_FIXTURE(WithoutHelper,
                  "a new version whose helper does not answer is started all the same, and the log says so")
{
    const auto begin = std::chrono::steady_clock::now();
    CHECK(run({{"1.0"}, {"1.0"}, {"2.0", true}, {"2.0"}, {"2.0"}}) == Outcome::Started);
    CHECK(std::chrono::steady_clock::now() - begin >= 100ms);
    CHECK(calls == "wait wait wait end start ");
    const auto text = log();
    const auto isInPlace = text.find("The new version is in place.\n");
    const auto isSilent = text.find("The new scheduler helper does not answer.\n");
    REQUIRE(isInPlace != std::string::npos);
    REQUIRE(isSilent != std::string::npos);
    CHECK(isInPlace < isSilent);
}

TEST_CASE_FIXTURE(WithoutHelper,
                  "a new version that comes as the application goes away is started, or it is told that it cannot be")
{
    SUBCASE("after an old one")
    {
        CHECK(run({{"1.0"}, {"1.0.1"}}) == Outcome::Started);
    }
    SUBCASE("where there was none")
    {
        CHECK(run({{nullptr}, {"0.1"}}) == Outcome::Started);
    }
    SUBCASE("in vain")
    {
        CHECK(run({{"1.0"}, {"1.0.1"}}, false) == Outcome::NotStarted);
    }
    CHECK(calls == "wait end start ");
}

TEST_CASE("a new version is started as soon as its helper answers")
{
    RunningHelper helper;
    ZRKLogInit("com.zerkolin.brevane.tests", "updated");
    std::string calls;
    const std::vector<Seen> seen{{"1.0"}, {"2.0"}, {"2.0"}};
    const auto begin = std::chrono::steady_clock::now();
    CHECK(PostUpdate(std::make_unique<PlayedWatch>(seen, calls)).run() == Outcome::Started);
    CHECK(std::chrono::steady_clock::now() - begin < 10s);
    CHECK(calls == "wait end start ");
    const auto log = contentOfFile(ZRKLogGetParentPath() + "/updated.log");
    CHECK(log.contains("The new version is in place.\n"));
    CHECK_FALSE(log.contains("does not answer"));
}
