#include "helper/Maintenance.h"
#include "protocol/ErrorCodes.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <doctest/doctest.h>
#include <future>
#include <memory>
#include <string>
#include <vector>

using helper::Maintenance;
using platform::PropertyList;
using platform::Result;

namespace {

platform::Error failure(int code)
{
    return {platform::POSIXErrorDomain, code, {}, nullptr};
}

// An installation that does what it is told, and tells what was asked of it.
class ToldInstallation final : public helper::ProductInstallation {
public:
    void recover() override { calls.emplace_back("recover"); }
    Result<PropertyList> check(const GivenUp&) const override { return PropertyList(std::string("newer")); }
    Result<void> install(const GivenUp&) override
    {
        calls.emplace_back("install");
        mayGoOn.get_future().wait();
        return outcome;
    }
    bool isManagedElsewhere() const override { return isManaged; }
    bool waitForTrial(std::chrono::milliseconds) const override
    {
        ++waits;
        return !isOnTrial;
    }
    Result<void> remove(const helper::PasswordRule&, const GivenUp&) override
    {
        calls.emplace_back("remove");
        return outcome;
    }

    std::vector<std::string> calls;
    mutable std::atomic<int> waits = 0;
    bool isManaged = false;
    bool isOnTrial = false;
    Result<void> outcome;
    std::promise<void> mayGoOn;
};

struct Maintained {
    Maintained()
    {
        peers->add("own");
        peers->setUsesHelper("own");
    }

    Result<PropertyList> uninstall()
    {
        std::promise<Result<PropertyList>> answer;
        maintenance->uninstall("own", [&](auto result) { answer.set_value(std::move(result)); });
        return answer.get_future().get();
    }

    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    std::shared_ptr<ToldInstallation> installation = std::make_shared<ToldInstallation>();
    std::shared_ptr<helper::Peers> peers = std::make_shared<helper::Peers>();
    std::promise<Maintenance::End> ended;
    helper::HelperOptions options{root.path(), {}, helper::UpdateConfiguration::builtIn(), {}};
    std::shared_ptr<Maintenance> maintenance =
        Maintenance::create(options, {nullptr, nullptr, installation, nullptr}, peers,
                            [this](Maintenance::End how) { ended.set_value(how); });
};

std::int64_t codeOf(const Result<PropertyList>& result)
{
    return result || result.error().domain != BRVErrorDomain ? -1 : result.error().code;
}

} // namespace

TEST_CASE("what was interrupted is finished before anything else is asked of the installation")
{
    const Maintained maintained;
    CHECK(maintained.installation->calls == std::vector<std::string>{"recover"});
}

TEST_CASE("what this program installed is removed once its version has proved itself, and ends the program")
{
    Maintained maintained;
    CHECK(maintained.uninstall().has_value());
    CHECK(maintained.installation->waits == 1);
    CHECK(maintained.installation->calls.back() == "remove");
    CHECK(maintained.ended.get_future().get() == Maintenance::End::Stop);
}

TEST_CASE("a version that is still on trial is not removed")
{
    Maintained maintained;
    maintained.installation->isOnTrial = true;
    CHECK(codeOf(maintained.uninstall()) == BRVErrorUpdateRunning);
    CHECK(maintained.installation->calls.back() == "recover");
    CHECK_FALSE(maintained.maintenance->isAtWork());
}

TEST_CASE("what another program manages is removed without the end of a trial")
{
    Maintained maintained;
    maintained.installation->isManaged = true;
    maintained.installation->isOnTrial = true;
    CHECK(maintained.uninstall().has_value());
    CHECK(maintained.installation->waits == 0);
    CHECK(maintained.ended.get_future().get() == Maintenance::End::Stop);
}

TEST_CASE("nothing is removed while another program uses the helper, whoever manages the installation")
{
    for (const bool isManaged : {false, true}) {
        Maintained maintained;
        maintained.installation->isManaged = isManaged;
        maintained.peers->add("other");
        maintained.peers->setUsesHelper("other");
        CHECK(codeOf(maintained.uninstall()) == BRVErrorPeersConnected);
        CHECK(maintained.installation->calls.back() == "recover");
    }
}

TEST_CASE("a removal that fails is told, and something else may be tried")
{
    Maintained maintained;
    maintained.installation->outcome = std::unexpected(failure(EBUSY));
    const auto result = maintained.uninstall();
    REQUIRE_FALSE(result.has_value());
    CHECK(result.error().code == EBUSY);
    CHECK_FALSE(maintained.maintenance->isAtWork());
}

TEST_CASE("while a version is installed nothing is removed, and afterwards the program goes on as that version")
{
    Maintained maintained;
    std::promise<Result<PropertyList>> installed;
    CHECK(maintained.maintenance->installUpdate([&](auto result) { installed.set_value(std::move(result)); }));
    CHECK(maintained.maintenance->isAtWork());
    CHECK(codeOf(maintained.uninstall()) == BRVErrorUpdateRunning);
    maintained.installation->mayGoOn.set_value();
    CHECK(installed.get_future().get().has_value());
    CHECK(maintained.ended.get_future().get() == Maintenance::End::Restart);
}

TEST_CASE("the installation is left alone while a backup is under way")
{
    Maintained maintained;
    *maintained.maintenance->backupIsUnderWay() = true;
    CHECK(codeOf(maintained.uninstall()) == BRVErrorBackupRunning);
    CHECK(maintained.installation->calls.back() == "recover");
}
