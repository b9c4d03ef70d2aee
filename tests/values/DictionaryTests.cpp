#include "platform/PropertyList.h"

#include <doctest/doctest.h>
#include <string>
#include <utility>
#include <vector>

using platform::Dictionary;
using platform::PropertyList;

namespace {

std::vector<std::string> keysOf(const Dictionary& dictionary)
{
    std::vector<std::string> keys;
    for (const Dictionary::Entry& entry : dictionary)
        keys.push_back(entry.key);
    return keys;
}

// Large enough to be looked up through an index.
Dictionary numbered(int count)
{
    Dictionary dictionary;
    for (int i = 0; i < count; ++i)
        dictionary.set("key" + std::to_string(i), i);
    return dictionary;
}

bool holdsNumbers(const Dictionary& dictionary, int begin, int end)
{
    for (int i = begin; i < end; ++i) {
        const PropertyList* value = dictionary.find("key" + std::to_string(i));
        if (!value || value->integerValue() != i)
            return false;
    }
    return true;
}

} // namespace

TEST_CASE("a dictionary keeps the order in which keys were first set")
{
    Dictionary dictionary{{"Minutes", 1}, {"Hours", 2}, {"Days", 3}};
    dictionary.set("Hours", 4);
    dictionary.set("Weeks", 5);
    CHECK(keysOf(dictionary) == std::vector<std::string>{"Minutes", "Hours", "Days", "Weeks"});
    CHECK(dictionary.integerForKey("Hours") == 4);
}

TEST_CASE("a key given twice at the start has its last value")
{
    const Dictionary dictionary{{"a", 1}, {"b", 2}, {"a", 3}};
    CHECK(dictionary.size() == 2);
    CHECK(dictionary.integerForKey("a") == 3);
}

TEST_CASE("what changes one of two dictionaries with the same keys leaves the other")
{
    for (const int count : {3, 40}) {
        CAPTURE(count);
        const Dictionary first = numbered(count);
        Dictionary longer = first;
        Dictionary shorter = first;
        longer.set("new", true);
        shorter.remove("key0");
        CHECK(first.size() == static_cast<std::size_t>(count));
        CHECK(holdsNumbers(first, 0, count));
        CHECK(!first.contains("new"));
        CHECK(longer.size() == first.size() + 1);
        CHECK(longer.boolForKey("new"));
        CHECK(shorter.size() == first.size() - 1);
        CHECK(holdsNumbers(shorter, 1, count));
        CHECK(!shorter.contains("key0"));
        CHECK(first != longer);
        CHECK(first != shorter);
    }
}

TEST_CASE("equal keys make dictionaries equal only if their values are, whatever the order")
{
    const Dictionary first{{"a", 1}, {"b", 2}};
    Dictionary copy = first;
    CHECK(copy == first);
    copy.set("b", 3);
    CHECK(copy != first);
    CHECK(Dictionary{{"b", 2}, {"a", 1}} == first);
    CHECK(Dictionary{{"b", 1}, {"a", 2}} != first);
}

TEST_CASE("a removed key is gone and the others keep their order")
{
    Dictionary dictionary{{"a", 1}, {"b", 2}, {"c", 3}};
    dictionary.remove("b");
    dictionary.remove("not there");
    CHECK(keysOf(dictionary) == std::vector<std::string>{"a", "c"});
    CHECK_FALSE(dictionary.contains("b"));
}

TEST_CASE("a missing key and a value of another type read as false, zero or nothing")
{
    const Dictionary dictionary{{"text", "1"}, {"number", 1}};
    CHECK_FALSE(dictionary.boolForKey("missing"));
    CHECK(dictionary.integerForKey("missing") == 0);
    CHECK(dictionary.stringForKey("missing") == nullptr);
    CHECK(dictionary.arrayForKey("missing") == nullptr);
    CHECK(dictionary.dictionaryForKey("missing") == nullptr);
    CHECK_FALSE(dictionary.boolForKey("text"));
    CHECK(dictionary.integerForKey("text") == 0);
    CHECK(dictionary.stringForKey("number") == nullptr);
    CHECK(dictionary.arrayForKey("number") == nullptr);
    CHECK(dictionary.dictionaryForKey("number") == nullptr);
}

TEST_CASE("a boolean is read as an integer and an integer as a boolean, by value")
{
    const Dictionary dictionary{{"yes", true}, {"seven", 7}, {"none", 0}, {"half", 0.5}};
    CHECK(dictionary.integerForKey("yes") == 1);
    CHECK(dictionary.boolForKey("seven"));
    CHECK_FALSE(dictionary.boolForKey("none"));
    CHECK(dictionary.boolForKey("half"));
    CHECK(dictionary.integerForKey("half") == 0);
}

TEST_CASE("a large dictionary finds, replaces, removes and copies like a small one")
{
    for (const int count : {31, 32, 33, 34, 1000}) {
        CAPTURE(count);
        Dictionary dictionary = numbered(count);
        REQUIRE(dictionary.size() == static_cast<std::size_t>(count));
        CHECK(holdsNumbers(dictionary, 0, count));
        CHECK_FALSE(dictionary.contains("key"));

        Dictionary copy = dictionary;
        CHECK(copy == dictionary);
        copy.remove("key0");
        CHECK(holdsNumbers(copy, 1, count));
        CHECK_FALSE(copy.contains("key0"));
        CHECK(dictionary.contains("key0"));
        CHECK(copy != dictionary);

        copy.set("key1", "replaced");
        CHECK(copy.size() == static_cast<std::size_t>(count) - 1);
        CHECK(*copy.stringForKey("key1") == "replaced");

        const Dictionary moved = std::move(dictionary);
        CHECK(holdsNumbers(moved, 0, count));
    }
}

TEST_CASE("a dictionary that was moved from is empty and can be filled again")
{
    Dictionary dictionary = numbered(100);
    const Dictionary taken = std::move(dictionary);
    dictionary = Dictionary();
    dictionary.set("key0", 0);
    CHECK(dictionary.size() == 1);
    CHECK(holdsNumbers(dictionary, 0, 1));
}

TEST_CASE("a dictionary can be assigned to itself and to a part of itself")
{
    Dictionary dictionary{{"inner", Dictionary{{"a", 1}}}};
    const Dictionary& same = dictionary;
    dictionary = same;
    CHECK(dictionary.contains("inner"));
    dictionary = *dictionary.dictionaryForKey("inner");
    CHECK(keysOf(dictionary) == std::vector<std::string>{"a"});
    CHECK(dictionary.integerForKey("a") == 1);
}

TEST_CASE("a dictionary can take a part of itself in its own place, with more values than it had and with fewer")
{
    for (const int count : {1, 5}) {
        Dictionary dictionary{{"inner", numbered(count)}, {"other", 1}};
        Dictionary copied = dictionary;
        copied = *copied.dictionaryForKey("inner");
        CHECK(copied == numbered(count));
        dictionary = std::move(const_cast<Dictionary&>(*dictionary.dictionaryForKey("inner")));
        CHECK(dictionary == numbered(count));
    }
}

TEST_CASE("dictionaries of the same keys and values are equal in any order")
{
    const Dictionary one{{"a", 1}, {"b", "x"}};
    const Dictionary other{{"b", "x"}, {"a", 1}};
    CHECK(one == other);
    CHECK(one != Dictionary{{"a", 1}});
    CHECK(one != Dictionary{{"a", 1}, {"c", "x"}});
    CHECK(one != Dictionary{{"a", 1}, {"b", "y"}});
}
