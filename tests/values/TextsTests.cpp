#include "platform/Texts.h"

#include <doctest/doctest.h>

using platform::Array;
using platform::arrayOf;
using platform::Dictionary;
using platform::textForKey;
using platform::textsOf;

TEST_CASE("a text that is missing or no text is empty")
{
    const Dictionary dictionary{{"Name", "disk"}, {"Count", 3}};
    CHECK(textForKey(dictionary, "Name") == "disk");
    CHECK(textForKey(dictionary, "Count").empty());
    CHECK(textForKey(dictionary, "Other").empty());
}

TEST_CASE("the texts of an array keep their order, and what is no text is left out")
{
    const Array array{"b", 1, "a", Dictionary{}, "", "b"};
    CHECK(textsOf(&array) == std::vector<std::string>{"b", "a", "", "b"});
    CHECK(textsOf(nullptr).empty());
    CHECK(arrayOf({"b", "a"}) == Array{"b", "a"});
}
