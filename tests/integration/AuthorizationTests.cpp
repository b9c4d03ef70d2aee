#include "platform/Authorization.h"
#include "tests/integration/TestService.h"
#include "tests/support/PolkitAuthority.h"
#include "tests/support/PrivateBus.h"

#include <chrono>
#include <doctest/doctest.h>
#include <string>
#include <thread>

using platform::Authorization;
using Answer = PolkitAuthority::Answer;

namespace {

constexpr const char* Right = "com.zerkolin.brevane.settings.modify-1";
constexpr const char* OtherRight = "com.zerkolin.brevane.settings.modify-2";
constexpr unsigned Interactive = Authorization::InteractionAllowed | Authorization::ExtendRights;
constexpr unsigned Silent = Authorization::ExtendRights;
const std::string Prompt = "You must authenticate to change the product settings.";

std::unique_ptr<Authorization> makeAuthorization()
{
    auto created = Authorization::create();
    REQUIRE(created);
    return std::move(*created);
}

std::string textOf(const Authorization::ExternalForm& form)
{
    const std::string text(form.begin(), form.end());
    return text.substr(0, text.find('\0'));
}

Authorization::ExternalForm formWith(std::string_view text)
{
    Authorization::ExternalForm form = {};
    std::copy(text.begin(), text.end(), form.begin());
    return form;
}

// Who the bus says has sent a message.
std::string senderOf(platform::ServiceConnection& connection)
{
    const platform::ServiceReply reply = connection.sendSynchronously({{"message", 1}});
    REQUIRE(reply);
    return textIn(*reply, "sender");
}

bool isRefused(const Authorization::ExternalForm& form, std::string_view sender)
{
    const auto made = Authorization::createFromExternalForm(form, sender);
    return !made && made.error() == Authorization::InternalizeNotAllowed;
}

} // namespace

TEST_CASE("each answer of the authority has its result code, with and without interaction")
{
    PrivateBus bus;
    PolkitAuthority authority;
    const auto authorization = makeAuthorization();
    struct Row {
        Answer answer;
        Authorization::Status silent;
        Authorization::Status interactive;
    };
    const Row rows[] = {
        {Answer::Authorized, Authorization::Success, Authorization::Success},
        {Answer::Challenge, Authorization::InteractionNotAllowed, Authorization::Denied},
        {Answer::Dismissed, Authorization::InteractionNotAllowed, Authorization::Canceled},
        {Answer::Denied, Authorization::Denied, Authorization::Denied},
        {Answer::KeptGrant, Authorization::InteractionNotAllowed, Authorization::Success},
        {Answer::Unknown, Authorization::Denied, Authorization::Denied},
    };
    for (const Row& row : rows) {
        CAPTURE(static_cast<int>(row.answer));
        authority.setAnswer(Right, row.answer);
        CHECK(authorization->copyRight(Right, Prompt, Silent) == row.silent);
        CHECK(authorization->copyRight(Right, Prompt, Interactive) == row.interactive);
    }
}

TEST_CASE("the authority is asked about this connection's own name, without details, and to interact only if allowed")
{
    PrivateBus bus;
    PolkitAuthority authority;
    const auto service = startTestService();
    RecordedConnection recorded;
    authority.setAnswer(Right, Answer::Authorized);
    const auto authorization = makeAuthorization();
    CHECK(authorization->copyRight(Right, Prompt, Silent) == Authorization::Success);
    CHECK(authorization->copyRight(Right, std::nullopt, Interactive) == Authorization::Success);
    const std::vector<PolkitAuthority::Call> calls = authority.calls();
    REQUIRE(calls.size() == 2);
    for (const PolkitAuthority::Call& call : calls) {
        CHECK(call.subjectKind == "system-bus-name");
        CHECK(call.subjectName == senderOf(*recorded.connection));
        CHECK(call.action == Right);
        CHECK(call.detailCount == 0);
    }
    CHECK(calls[0].flags == 0);
    CHECK(calls[1].flags == 1);
}

TEST_CASE("the external form is the name of the connection that sends the messages, padded with zeros")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const auto authorization = makeAuthorization();
    const auto form = authorization->makeExternalForm();
    REQUIRE(form);
    const std::string sender = senderOf(*recorded.connection);
    CHECK(*form == formWith(sender));
    CHECK(sender.size() < form->size());
}

TEST_CASE("after the shared connection was replaced the form still names the one that sends the messages")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const std::string before = senderOf(*recorded.connection);
    makeAuthorization()->free(Authorization::DestroyRights);
    const auto form = makeAuthorization()->makeExternalForm();
    REQUIRE(form);
    CHECK(textOf(*form) != before);
    CHECK(senderOf(*recorded.connection) == textOf(*form));
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("a form from its own sender asks about that sender without a dialog")
{
    PrivateBus bus;
    PolkitAuthority authority;
    authority.setAnswer(Right, Answer::KeptGrant);
    const auto user = makeAuthorization();
    REQUIRE(user->copyRight(Right, Prompt, Interactive) == Authorization::Success);
    const auto form = user->makeExternalForm();
    REQUIRE(form);
    auto received = Authorization::createFromExternalForm(*form, textOf(*form));
    REQUIRE(received);
    CHECK((*received)->copyRight(Right, std::nullopt, 0) == Authorization::Success);
    CHECK((*received)->copyRight(OtherRight, std::nullopt, 0) == Authorization::Denied);
    CHECK(authority.calls().back().subjectName == textOf(*form));
    CHECK(authority.calls().back().flags == 0);
    CHECK((*received)->makeExternalForm() == *form);
}

TEST_CASE("bytes that stand for anyone but their sender are refused")
{
    const std::string_view sender = ":1.25";
    CHECK(Authorization::createFromExternalForm(formWith(sender), sender));
    CHECK(isRefused(formWith(":1.2"), sender));   // a shorter name
    CHECK(isRefused(formWith(":1.255"), sender)); // a longer one
    CHECK(isRefused(formWith(":1.26"), sender));  // another process
    CHECK(isRefused(formWith(""), sender));
    CHECK(isRefused(formWith(""), ""));
    CHECK(isRefused(formWith(sender), "")); // nobody vouches for it
    CHECK(isRefused(formWith("1.25"), "1.25"));
    CHECK(isRefused(formWith("org.freedesktop.DBus"), "org.freedesktop.DBus"));
    CHECK(isRefused(formWith(":1"), ":1"));
    CHECK(isRefused(formWith(":1."), ":1."));
    CHECK(isRefused(formWith(":.1"), ":.1"));
    CHECK(isRefused(formWith(":1.2.3"), ":1.2.3"));
    CHECK(isRefused(formWith(":1.2x"), ":1.2x"));
    CHECK(isRefused(formWith(std::string_view(":1.25\0x", 7)), sender)); // something after the zeros
    Authorization::ExternalForm trailing = formWith(sender);
    trailing.back() = 1;
    CHECK(isRefused(trailing, sender));
    const std::string longName = ":1.123456789012345678901234567890";
    CHECK(isRefused(formWith(std::string_view(longName).substr(0, 32)), longName));
    const std::string longestName = longName.substr(0, 32);
    CHECK(Authorization::createFromExternalForm(formWith(longestName), longestName));
}

TEST_CASE("a dialog that stays open does not hold up the messages of other threads")
{
    PrivateBus bus;
    PolkitAuthority authority;
    const auto service = startTestService();
    RecordedConnection recorded;
    authority.setAnswer(Right, Answer::Hang);
    Authorization::Status status = Authorization::Internal;
    std::thread asking([&] { status = makeAuthorization()->copyRight(Right, Prompt, Interactive); });
    REQUIRE(authority.waitForCalls(1).size() == 1);
    for (int index = 0; index < 100; ++index)
        CHECK_FALSE(senderOf(*recorded.connection).empty());
    authority.setAnswer(Right, Answer::Authorized);
    asking.join();
    CHECK(status == Authorization::Success);
}

TEST_CASE("an authority that dies during the dialog has given no answer, and the next question reaches the new one")
{
    PrivateBus bus;
    PolkitAuthority authority;
    const auto service = startTestService();
    RecordedConnection recorded;
    const std::string sender = senderOf(*recorded.connection);
    authority.setAnswer(Right, Answer::Crash);
    const auto authorization = makeAuthorization();
    CHECK(authorization->copyRight(Right, Prompt, Interactive) == Authorization::Internal);
    CHECK(authorization->copyRight(Right, Prompt, Interactive) == Authorization::Internal);
    authority.restart();
    authority.setAnswer(Right, Answer::Authorized);
    CHECK(authorization->copyRight(Right, Prompt, Interactive) == Authorization::Success);
    CHECK(senderOf(*recorded.connection) == sender);
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("without a bus no right is granted and no form can be made")
{
    PrivateBus bus;
    bus.kill();
    const auto authorization = makeAuthorization();
    CHECK(authorization->copyRight(Right, Prompt, Interactive) == Authorization::Internal);
    CHECK(authorization->makeExternalForm() == std::unexpected(Authorization::ExternalizeNotAllowed));
    bus.restart();
    PolkitAuthority authority;
    authority.setAnswer(Right, Answer::Authorized);
    CHECK(authorization->copyRight(Right, Prompt, Interactive) == Authorization::Success);
}

TEST_CASE("a connection that was cut while idle is replaced when a right is asked for")
{
    PrivateBus bus;
    const auto authorization = makeAuthorization();
    {
        PolkitAuthority authority;
        authority.setAnswer(Right, Answer::Authorized);
        CHECK(authorization->copyRight(Right, Prompt, Silent) == Authorization::Success);
    }
    bus.restart();
    PolkitAuthority authority;
    authority.setAnswer(Right, Answer::Authorized);
    CHECK(authorization->copyRight(Right, Prompt, Silent) == Authorization::Success);
}

TEST_CASE("destroying the rights revokes what was kept, and the object can't be used afterwards")
{
    PrivateBus bus;
    PolkitAuthority authority;
    authority.setAnswer(Right, Answer::KeptGrant);
    const auto first = makeAuthorization();
    REQUIRE(first->copyRight(Right, Prompt, Interactive) == Authorization::Success);
    const std::string subject = authority.calls().back().subjectName;
    first->free(Authorization::DestroyRights);
    CHECK(authority.revoked() == std::vector<std::string>{"tmpauthz1"});
    CHECK(first->copyRight(Right, Prompt, Interactive) == Authorization::InvalidReference);
    CHECK(first->makeExternalForm() == std::unexpected(Authorization::InvalidReference));

    const auto second = makeAuthorization();
    CHECK(second->copyRight(Right, Prompt, Silent) == Authorization::InteractionNotAllowed);
    CHECK(authority.calls().back().subjectName != subject);
}

TEST_CASE("freeing without destroying keeps the grant for the next authorization of the process")
{
    PrivateBus bus;
    PolkitAuthority authority;
    authority.setAnswer(Right, Answer::KeptGrant);
    REQUIRE(makeAuthorization()->copyRight(Right, Prompt, Interactive) == Authorization::Success);
    CHECK(makeAuthorization()->copyRight(Right, Prompt, Silent) == Authorization::Success);
    CHECK(authority.revoked().empty());
}
