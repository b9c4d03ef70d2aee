#include "helper/Turns.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <vector>

using helper::Turns;

namespace {

// Turns that record who starts, and hold every turn until it is ended here.
struct Played {
    std::vector<std::function<void()>> posted;
    std::shared_ptr<Turns> turns = Turns::create([this](auto task) { posted.push_back(std::move(task)); });
    std::vector<std::string> started;
    std::vector<Turns::Turn> held;
    int refused = 0;

    void add(const std::string& line, const std::string& name, std::size_t size = 0, bool isOpen = true)
    {
        turns->add(line,
                   {name, size,
                    [this, name](Turns::Turn turn) {
                        started.push_back(name);
                        held.push_back(std::move(turn));
                    },
                    [this] { ++refused; }},
                   isOpen);
    }
    void endFirst()
    {
        held.erase(held.begin());
        for (const auto& task : std::exchange(posted, {}))
            task();
    }
};

using Names = std::vector<std::string>;

} // namespace

TEST_CASE("a flood of one line does not delay another one")
{
    Played played;
    for (int count = 0; count < 1000; ++count)
        played.add("flood", "a");
    played.add("other", "b");
    CHECK(played.started == Names{"a", "b"});
    played.endFirst();
    CHECK(played.started == Names{"a", "b", "a"});
}

TEST_CASE("the requests of a line start in order, each after the end of the one before")
{
    Played played;
    for (const char* name : {"a", "b", "c"})
        played.add("line", name);
    CHECK(played.started == Names{"a"});
    const auto copy = played.held.front();
    played.endFirst();
    CHECK(played.started == Names{"a"}); // another copy of the turn is there
    played.held.insert(played.held.begin(), copy);
}

TEST_CASE("a line that is not open waits until its people go to another one")
{
    Played played;
    played.add(":1.1", "early", 0, false);
    played.add(":1.1", "early too", 0, false);
    played.add("1000", "first");
    CHECK(played.started == Names{"first"});
    played.turns->move(":1.1", "1000");
    played.turns->move(":1.9", "1000");
    played.endFirst();
    played.endFirst();
    CHECK(played.started == Names{"first", "early", "early too"});
    CHECK(played.turns->size() == 0);
}

TEST_CASE("a line that is full refuses, and leaves room to the others")
{
    Played played;
    played.add("full", "a"); // at work, and no longer waiting
    for (int count = 0; count < 10; ++count)
        played.add("full", "a", 1'000'000);
    CHECK(played.refused == 2);
    played.add("other", "b", 1'000'000);
    CHECK(played.refused == 2);
    CHECK(played.started == Names{"a", "b"});
}

TEST_CASE("when everything is full the longest line gives way to a short one")
{
    Played played;
    for (const char* line : {"a", "b", "c", "d"}) {
        played.add(line, line);
        for (int count = 0; count < 6; ++count)
            played.add(line, line, 1'000'000);
    }
    CHECK(played.turns->size() <= Turns::maximumSize);
    const int refused = played.refused;
    played.add("small", "at work");
    played.add("small", "waits", 600'000);
    CHECK(played.refused > refused - 1);
    CHECK(played.turns->size() <= Turns::maximumSize);
    for (int count = 0; count < 5; ++count)
        played.endFirst();
    CHECK(std::ranges::find(played.started, "waits") != played.started.end());
}

TEST_CASE("what a sender that left has waiting is dropped without a word")
{
    Played played;
    for (const char* name : {"a", "gone", "b", "gone"})
        played.add("line", name);
    played.turns->drop("gone");
    CHECK(played.turns->size() == Turns::requestOverhead);
    played.endFirst();
    played.endFirst();
    CHECK(played.started == Names{"a", "b"});
    CHECK(played.refused == 0);
}

TEST_CASE("after everything was dropped nothing starts any more")
{
    Played played;
    played.add("line", "a");
    played.add("line", "b");
    played.turns->dropAll();
    played.endFirst();
    CHECK(played.started == Names{"a"});
    CHECK(played.turns->size() == 0);
}
