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

TEST_CASE("when everything is full the newest of the longest line gives way to a short one")
{
    Played played;
    for (const char* line : {"a", "b", "c", "d"}) {
        played.add(line, "at work");
        for (int number = 1; number <= 6; ++number)
            played.add(line, line + std::to_string(number), line[0] == 'd' ? 900'000 : 1'000'000);
    }
    CHECK(played.refused == 0);
    played.add("e", "at work");
    played.add("e", "waits", 2'000'000);
    CHECK(played.refused == 1);
    CHECK(played.turns->size() <= Turns::maximumSize);
    while (!played.held.empty())
        played.endFirst();
    CHECK(std::ranges::count(played.started, "at work") == 5);
    CHECK(std::ranges::count(played.started, "waits") == 1);
    CHECK(std::ranges::count(played.started, "a6") + std::ranges::count(played.started, "b6")
              + std::ranges::count(played.started, "c6")
          == 2);
    CHECK(std::ranges::count(played.started, "d6") == 1);
    CHECK(played.turns->size() == 0);
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

TEST_CASE("a line takes as much as its size allows, each request with its overhead, and not a byte more")
{
    Played played;
    constexpr auto rest = Turns::maximumLineSize - 2 * Turns::requestOverhead;
    CHECK(played.turns->hasRoom("line", Turns::maximumLineSize)); // nobody is in it
    played.add("line", "at work", 100);
    played.add("line", "waits", 100);
    CHECK(played.turns->size() == Turns::requestOverhead + 100);
    CHECK(played.turns->hasRoom("line", rest - 100));
    CHECK_FALSE(played.turns->hasRoom("line", rest - 99));
    CHECK(played.turns->hasRoom("other", rest));
    played.add("line", "too much", rest - 99);
    CHECK(played.refused == 1);
    played.add("line", "enough", rest - 100);
    CHECK(played.refused == 1);
    CHECK(played.turns->size() == Turns::maximumLineSize);
    played.turns->drop("enough");
    CHECK(played.turns->hasRoom("line", rest - 100));
    played.turns->dropAll();
    CHECK(played.turns->hasRoom("line", Turns::maximumLineSize - Turns::requestOverhead));
    CHECK_FALSE(played.turns->hasRoom("line", Turns::maximumLineSize - Turns::requestOverhead + 1));
}

TEST_CASE("a sender that leaves takes nobody along who waits in a line that is not open")
{
    Played played;
    for (const char* name : {"stays", "gone", "stays too"})
        played.add(":1.1", name, 0, false);
    played.add(":1.2", "gone", 0, false);
    played.turns->drop("gone");
    CHECK(played.turns->size() == 2 * Turns::requestOverhead);
    played.turns->move(":1.1", "1000");
    played.turns->move(":1.2", "1000");
    CHECK(played.turns->size() == Turns::requestOverhead);
    while (!played.held.empty())
        played.endFirst();
    CHECK(played.started == Names{"stays", "stays too"});
    CHECK(played.refused == 0);
}
