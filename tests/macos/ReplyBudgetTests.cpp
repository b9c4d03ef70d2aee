#include "platform/macos/service/ReplyBudget.h"

#include <doctest/doctest.h>

using platform::ReplyBudget;

namespace {

constexpr std::uint32_t anna = 501;
constexpr std::uint32_t bert = 502;
constexpr std::size_t megabyte = std::size_t(1) << 20;

} // namespace

TEST_CASE("a user who reads is sent as much as is asked for")
{
    ReplyBudget budget;
    REQUIRE(budget.connect(anna));
    for (int count = 0; count < 100; ++count) {
        REQUIRE(budget.charge(anna, megabyte));
        budget.taken(anna, megabyte);
    }
    CHECK(budget.outstanding() == 0);
}

TEST_CASE("a user who does not read is cut off at the user's limit, and others are not")
{
    ReplyBudget budget;
    REQUIRE(budget.connect(anna));
    REQUIRE(budget.connect(bert));
    std::size_t sent = 0;
    while (budget.charge(anna, megabyte))
        sent += megabyte;
    CHECK(sent == ReplyBudget::UserSize);
    CHECK(budget.outstanding(anna) == sent);
    CHECK(budget.charge(bert, megabyte));
    budget.taken(anna, megabyte);
    CHECK(budget.charge(anna, megabyte));
}

TEST_CASE("one reply is had however large it is, and nothing after it")
{
    ReplyBudget budget;
    REQUIRE(budget.connect(anna));
    CHECK(budget.charge(anna, 2 * ReplyBudget::UserSize));
    CHECK_FALSE(budget.charge(anna, 1));
}

TEST_CASE("many users together leave each less than one alone has")
{
    ReplyBudget budget;
    std::size_t sent = 0;
    for (std::uint32_t user = 1000; user < 1100; ++user) {
        REQUIRE(budget.connect(user));
        for (std::size_t size = megabyte; budget.charge(user, size);)
            sent += size;
    }
    // The first reply of each is sent in any case.
    CHECK(sent <= ReplyBudget::TotalSize + 100 * megabyte);
    CHECK(budget.outstanding(1099) == megabyte);
    CHECK(budget.outstanding() == sent);
}

TEST_CASE("a user has a bounded number of connections, counted down as they end")
{
    ReplyBudget budget;
    for (std::size_t count = 0; count < ReplyBudget::UserConnections; ++count)
        REQUIRE(budget.connect(anna));
    CHECK_FALSE(budget.connect(anna));
    CHECK(budget.connect(bert));
    budget.disconnect(anna);
    CHECK(budget.connect(anna));
}

TEST_CASE("what a user who has gone was owed is counted until it is taken, and no more is given back than was charged")
{
    ReplyBudget budget;
    REQUIRE(budget.connect(anna));
    REQUIRE(budget.charge(anna, 10));
    budget.disconnect(anna);
    CHECK(budget.outstanding() == 10);
    budget.taken(anna, 15);
    CHECK(budget.outstanding() == 0);
    budget.taken(anna, 5);
    budget.disconnect(anna);
    CHECK(budget.outstanding() == 0);
}
