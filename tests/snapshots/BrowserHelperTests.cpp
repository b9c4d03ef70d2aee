#include "platform/ByteCountFormat.h"
#include "platform/DateFormat.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ui/User.h"
#include "tests/shell/support/PlayedScheduler.h"
#include "tests/snapshots/support/BrowserTest.h"

#include <algorithm>
#include <cerrno>
#include <doctest/doctest.h>

using namespace platform::ui;
using platform::Array;
using platform::Dictionary;
using platform::SnapshotAccess;
namespace snapshots = scripted::snapshots;
namespace service = scripted::service;

namespace {

using Texts = std::vector<std::string>;
constexpr std::int64_t list = 11;
constexpr const char* newSnapshot = "com.zerkolin.brevane.snapshot";
constexpr const char* right1 = "com.zerkolin.brevane.settings.modify-1";
constexpr const char* right2 = "com.zerkolin.brevane.settings.modify-2";

// The browser of a person who is no administrator, where only administrators may list.
struct Refused {
    Refused()
    {
        snapshots::setMissingAccess(SnapshotAccess::Administrator);
        for (const auto* const path : {"/first", "/second"}) {
            scripted::volumes::add({.path = path});
            snapshots::set(path, {.answers = {}, .sizes = {}, .refusal = EPERM});
        }
        test.open();
    }

    Button& button() const { return test.control<Button>("fullDiskAccessButton"); }
    std::string explanation() const { return test.control<TextField>("fullDiskAccessTextField").stringValue(); }
    bool isAnswered(std::size_t questions) const
    {
        const bool arrived =
            user::runEventsUntil([&] { return scheduler.count(list) >= questions && button().isEnabled(); }, 10'000);
        user::runEvents();
        return arrived && scheduler.count(list) == questions;
    }
    void press(std::size_t questions = 1) const
    {
        user::click(button());
        CHECK(isAnswered(questions));
    }

    BrowserTest test;
    PlayedScheduler scheduler{{}};
};

// "Name" and "Date", and a size for those that have one.
Dictionary listOf(const Texts& names, bool isComplete = true)
{
    Array listed;
    for (const auto& name : names)
        listed.emplace_back(Dictionary{{"Name", name}, {"Date", platform::Date{800'000'000}}});
    return {{"Snapshots", std::move(listed)}, {"Complete", isComplete}};
}

std::size_t dialogs()
{
    constexpr unsigned interactionAllowed = 1;
    const auto calls = scripted::authorization::calls(scripted::authorization::Operation::CopyRight);
    return static_cast<std::size_t>(
        std::ranges::count_if(calls, [](const auto& call) { return (call.flags & interactionAllowed) != 0; }));
}

} // namespace

TEST_CASE("where listing needs an administrator the window says so and lists what the helper tells")
{
    const Refused browser;
    CHECK(browser.test.showsRefusal());
    CHECK(browser.explanation() == "Listing the snapshots of this volume needs administrator rights.");
    CHECK(browser.button().title() == "List as Administrator…");
    CHECK(browser.scheduler.count(list) == 0); // nobody has asked for it
    auto told = listOf({"a"});
    auto withSize = Dictionary{{"Name", "b"}, {"Date", platform::Date{800'000'060}}, {"Size", 2'000}};
    auto snapshotsTold = *told.arrayForKey("Snapshots");
    snapshotsTold.emplace_back(withSize);
    told.set("Snapshots", snapshotsTold);
    auto scheduler = browser.scheduler;
    scheduler.answerMessage(list, replyWith(told));
    browser.press();
    CHECK_FALSE(browser.test.showsRefusal());
    auto dates = platform::DateFormat::withStyles(platform::DateStyle::Short, platform::DateStyle::Short);
    CHECK(browser.test.rows()
          == std::vector<BrowserTest::Row>{{dates.stringFromDate(800'000'000 + 978'307'200.0), "a", "--"},
                                           {dates.stringFromDate(800'000'060 + 978'307'200.0), "b",
                                            platform::ByteCountFormat().stringFromByteCount(2'000)}});
    CHECK(browser.scheduler.payloads(list) == std::vector<Dictionary>{{{"Volume", "/first"}}});
    const auto requests = service::requests();
    REQUIRE_FALSE(requests.empty());
    CHECK(requests.back().message.contains("auth"));
    CHECK(dialogs() == 1);
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a volume without snapshots says so when the helper has listed it")
{
    const Refused browser;
    browser.press();
    CHECK_FALSE(browser.test.showsRefusal());
    CHECK(browser.test.rows().empty());
    CHECK(browser.test.placeholder() == "There are no local snapshots on this volume.");
}

TEST_CASE("while the helper lists, the window says so, and cannot be asked again")
{
    const Refused browser;
    service::hold();
    user::click(browser.button());
    user::runEvents();
    CHECK(browser.test.placeholder() == "Listing the snapshots…");
    CHECK_FALSE(browser.button().isEnabled());
    service::release();
    CHECK(browser.isAnswered(1));
}

TEST_CASE("once listed, the list follows what is told and the volume that is chosen, without an authentication")
{
    Refused browser;
    browser.scheduler.answerMessage(list, replyWith(listOf({"a"})));
    browser.press();
    CHECK(dialogs() == 1);
    browser.scheduler.answerMessage(list, replyWith(listOf({"a", "b"})));
    scripted::notifications::arrive(newSnapshot);
    CHECK(browser.isAnswered(2));
    CHECK(browser.test.names() == Texts{"a", "b"});
    service::hold();
    browser.test.choose(1);
    CHECK(browser.test.names().empty()); // those were another volume's
    CHECK_FALSE(browser.test.showsRefusal());
    service::release();
    CHECK(browser.isAnswered(3));
    CHECK(browser.test.names() == Texts{"a", "b"});
    CHECK(browser.scheduler.payloads(list).back() == Dictionary{{"Volume", "/second"}});
    CHECK(dialogs() == 1);
}

TEST_CASE("a list that arrives when another volume is chosen is not shown for it")
{
    Refused browser;
    browser.scheduler.answerMessage(list, replyWith(listOf({"a"})));
    service::hold();
    user::click(browser.button());
    user::runEvents();
    browser.test.choose(1);
    service::release();
    CHECK(browser.isAnswered(2));
    CHECK(browser.scheduler.payloads(list).back() == Dictionary{{"Volume", "/second"}});
}

TEST_CASE("what is told while the helper lists is asked for once afterwards")
{
    const Refused browser;
    service::hold();
    user::click(browser.button());
    user::runEvents();
    service::release();
    CHECK(browser.isAnswered(1));
    service::hold();
    for (int count = 0; count < 3; ++count) {
        scripted::notifications::arrive(newSnapshot);
        user::runEvents();
    }
    service::release();
    CHECK(browser.isAnswered(3));
}

TEST_CASE("when the right is gone the explanation and its button are back, and nobody is asked for a password")
{
    const Refused browser;
    browser.press();
    for (const auto* const right : {right1, right2})
        scripted::authorization::answerCopyRight(right, {platform::Authorization::InteractionNotAllowed});
    const auto before = dialogs();
    scripted::notifications::arrive(newSnapshot);
    user::runEvents();
    CHECK(browser.isAnswered(1));
    CHECK(browser.test.showsRefusal());
    CHECK(dialogs() == before);
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("who cancels the authentication of the list is told nothing")
{
    const Refused browser;
    scripted::authorization::answerCopyRight(right1, {platform::Authorization::Canceled});
    user::click(browser.button());
    user::runEvents();
    CHECK_FALSE(user::currentAlert());
    CHECK(browser.test.showsRefusal());
    CHECK(browser.button().isEnabled());
    CHECK(browser.test.placeholder().empty());
}

TEST_CASE("why the helper did not list is told on a sheet")
{
    Refused browser;
    std::string expected;
    SUBCASE("a helper of another version")
    {
        browser.scheduler.refuseMessage(
            list, {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {{"message", list}}, nullptr});
        expected = "The background scheduler is of another version, which does not list snapshots. Install the latest "
                   "version of Brevane.";
    }
    SUBCASE("no helper")
    {
        browser.scheduler.answerMessage(list, std::unexpected(platform::ServiceError::Invalid));
        expected = "The background scheduler does not run, or is not installed.";
    }
    SUBCASE("the volume is gone")
    {
        browser.scheduler.refuseMessage(list, {platform::POSIXErrorDomain, ENOENT, {}, nullptr});
        expected = "No such file or directory";
    }
    browser.press();
    REQUIRE(user::currentAlert());
    CHECK(user::currentAlert()->isSheet);
    CHECK(user::currentAlert()->messageText == "The snapshots of this volume could not be listed.");
    CHECK(user::currentAlert()->informativeText == expected);
    user::answer(0);
    CHECK(browser.test.showsRefusal());
}

TEST_CASE("a list that is cut says that there are more")
{
    Refused browser;
    browser.scheduler.answerMessage(list, replyWith(listOf({"a"}, false)));
    browser.press();
    CHECK(browser.test.names() == Texts{"a"});
    CHECK(browser.explanation() == "There are more snapshots than are listed here.");
    CHECK(browser.button().isHidden()); // there is nothing that an administrator could do
}

TEST_CASE("a reply of another form shows what can be shown")
{
    Refused browser;
    browser.scheduler.answerMessage(
        list,
        replyWith(
            Dictionary{{"Snapshots",
                        Array{"text", Dictionary{{"Name", "a"}}, Dictionary{{"Name", 3}, {"Date", platform::Date{}}},
                              Dictionary{{"Name", "c"}, {"Date", platform::Date{}}}}}}));
    browser.press();
    CHECK(browser.test.names() == Texts{"c"});
}
