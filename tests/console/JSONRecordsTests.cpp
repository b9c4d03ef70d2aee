#include "platform/JSONRecords.h"

#include <array>
#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using platform::JSONField;
using platform::JSONRecords;

namespace {

constexpr std::array<std::string_view, 2> readKeys = {"a", "b"};

std::string shown(const JSONField& field)
{
    if (field.kind == JSONField::Kind::Absent)
        return "-";
    return (field.kind == JSONField::Kind::String ? "s:" : "o:") + std::string(field.text);
}

// The values of "a" and "b" of each element; nothing after an error.
std::optional<std::vector<std::string>> readAll(const std::string& json, std::size_t piece = 2048)
{
    std::vector<std::string> found;
    JSONRecords records(readKeys, [&](std::span<const JSONField> fields) {
        found.push_back(shown(fields[0]) + " " + shown(fields[1]));
    });
    for (std::size_t place = 0; place < json.size(); place += piece)
        records.append(std::string_view(json).substr(place, piece));
    return records.finish() ? std::optional(found) : std::nullopt;
}

using Lines = std::vector<std::string>;

} // namespace

TEST_CASE("strings, missing keys and other values are told apart")
{
    CHECK(readAll(R"([{"a":"x","b":"y"},{"b":"z"},{},{"a":null,"b":12},{"a":true,"b":-1.5},{"a":[],"b":{}}])")
          == Lines{"s:x s:y", "- s:z", "- -", "o:<null> o:12", "o:1 o:-1.5", "o:(\n) o:{\n}"});
}

TEST_CASE("elements that are no objects have no values")
{
    CHECK(readAll(R"([1,"a",null,[{"a":"x"}],{"a":"y"}])") == Lines{"- -", "- -", "- -", "- -", "s:y -"});
}

TEST_CASE("of a key that is there twice the last value counts, and keys may be escaped")
{
    CHECK(readAll(R"([{"a":"1","a":"2"},{"\u0061":"3"}])") == Lines{"s:2 -", "s:3 -"});
}

TEST_CASE("escapes are resolved and may fall on the edge of two pieces")
{
    const std::string json = R"([{"a":"q\"\\\"\\","b":"\u00e9\ud83d\ude00\n\u0000."}])";
    for (std::size_t piece = 1; piece < json.size(); ++piece) {
        CAPTURE(piece);
        CHECK(readAll(json, piece) == Lines{std::string("s:q\"\\\"\\ s:é😀\n") + '\0' + "."});
    }
}

TEST_CASE("an array that is longer than a part is read as a whole, and its damage found wherever it is")
{
    const auto element = [](int number) {
        return "{\"a\":\"" + std::to_string(number) + "\",\"pad\":\"" + std::string(900, 'x') + "\"}";
    };
    std::string json = "[";
    for (int number = 0; number < 2000; ++number)
        json += (number ? "," : "") + element(number);
    const auto whole = readAll(json + "]");
    REQUIRE(whole);
    REQUIRE(whole->size() == 2000);
    CHECK(whole->front() == "s:0 -");
    CHECK(whole->back() == "s:1999 -");

    CHECK_FALSE(readAll(json));
    CHECK_FALSE(readAll(json + ",]"));
    CHECK_FALSE(readAll(json + ",,1]"));
    CHECK_FALSE(readAll(json + "}"));
    CHECK_FALSE(readAll(json + "]]"));
    for (const std::size_t place : {std::size_t(20), json.size() / 2, json.size() - 20}) {
        auto damaged = json + "]";
        damaged[damaged.find('x', place) + 1] = '\x01';
        CHECK_FALSE(readAll(damaged));
    }
    // Nothing but space where an element should be, as long as a part.
    const std::string space(std::size_t(600) << 10, ' ');
    CHECK_FALSE(readAll("[" + space + ",1]"));
    CHECK_FALSE(readAll("[1," + space + ",1]"));
    CHECK_FALSE(readAll("[1," + space + "]"));
    CHECK(readAll("[1," + space + "1" + space + "]")->size() == 2);
}

TEST_CASE("an integer beyond 64 bits is the nearest real, and its neighbours keep their values")
{
    CHECK(readAll(R"([{"a":18446744073709551616,"b":"x"},{"a":-9223372036854775809}])")
          == Lines{"o:1.8446744073709552e+19 s:x", "o:-9.223372036854776e+18 -"});
    CHECK(readAll(R"([{"a":18446744073709551615,"b":-9223372036854775808},{"b":1e-400}])")
          == Lines{"o:18446744073709551615 o:-9223372036854775808", "- o:0"});
    CHECK(readAll(R"([99999999999999999999,{"a":[99999999999999999999 ,{"c":"99999999999999999999\""}]}])")
          == Lines{"- -",
                   "o:(\n    \"1e+20\",\n        {\n        c = \"99999999999999999999\\\"\";\n    "
                   "}\n) -"});
    CHECK_FALSE(readAll(R"([{"a":1e400}])"));
    CHECK_FALSE(readAll(R"([{"a":-1.5E+400}])"));
}

TEST_CASE("a number that JSON does not know stays damage, however large it is")
{
    for (const char* const element :
         {"099999999999999999999", "-", "-099999999999999999999", "+99999999999999999999", "99999999999999999999.",
          "99999999999999999999e", ".99999999999999999999", "1e400e", "99999999999999999999-", "1.e400",
          R"({99999999999999999999:1})", R"({99999999999999999999 : 1})", R"("a"99999999999999999999)",
          "99999999999999999999 1", R"("99999999999999999999)", R"(99999999999999999999,{"a":tru})"}) {
        CAPTURE(element);
        CHECK_FALSE(readAll("[" + std::string(element) + "]"));
    }
}

TEST_CASE("of text that cannot become an array no element is read, however much follows")
{
    for (const char* const start : {"nonsense", "{", "[x", "[1]1", "[\x01"}) {
        JSONRecords records(readKeys, [](auto) { FAIL("no element"); });
        records.append(start);
        for (int piece = 0; piece < 1000; ++piece)
            records.append(std::string(2048, 'n'));
        CAPTURE(start);
        CHECK_FALSE(records.isEmpty());
        CHECK_FALSE(records.finish());
    }
}

TEST_CASE("elements are read while the array arrives, and the reader goes when nobody asks for the end")
{
    std::atomic<int> count = 0;
    JSONRecords records(readKeys, [&](auto) { ++count; });
    records.append("[");
    const auto element = "{\"a\":\"" + std::string(1000, 'x') + "\"},";
    for (int number = 0; number < 2000; ++number)
        records.append(element);
    for (int attempt = 0; attempt < 1000 && count < 1000; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    CHECK(count >= 1000);
}

TEST_CASE("an error says in words what is wrong")
{
    const auto reason = [](const std::string& json) {
        JSONRecords records(readKeys, [](auto) { });
        records.append(json);
        const auto read = records.finish();
        REQUIRE_FALSE(read);
        CHECK(read.error().domain == platform::CocoaErrorDomain);
        CHECK(read.error().code == 3840);
        const auto text = platform::localizedDescription(read.error());
        const std::string start = "The data is not valid JSON. (";
        REQUIRE(text.starts_with(start));
        REQUIRE(text.ends_with(")"));
        return text.substr(start.size(), text.size() - start.size() - 1);
    };
    CHECK(reason("") == "It is empty.");
    CHECK(reason(" \n") == "It is empty.");
    CHECK(reason("{}") == "It is not an array.");
    CHECK(reason("log: an error") == "It is not an array.");
    CHECK(reason("[") == "It ends early.");
    CHECK(reason(R"([{"a":"x)") == "It ends early.");
    CHECK(reason("[1]x") == "Characters follow the array.");
    CHECK(reason("[1][2]") == "Characters follow the array.");
    CHECK(reason(std::string(1001, '[') + std::string(1001, ']')) == "It is nested too deeply.");
    CHECK(reason("[%]") == "It has a character that JSON does not know.");
    CHECK(reason("[" + std::string(std::size_t(600) << 10, ' ') + ",1]") == "An element is missing.");
    CHECK_FALSE(reason(R"([{"a":tru}])").empty());
    CHECK_FALSE(reason("[1}").empty());
}
