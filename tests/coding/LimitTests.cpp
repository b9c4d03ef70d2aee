#include "platform/ErrorArchive.h"
#include "tests/coding/Samples.h"

#include <algorithm>
#include <chrono>
#include <doctest/doctest.h>
#include <functional>

using namespace std::string_literals;
using platform::Array;
using platform::binaryPropertyList;
using platform::Data;
using platform::Dictionary;
using platform::PropertyList;
using platform::propertyListWithData;

namespace {

// Generous for a loaded machine and a build that checks everything; time in the square of the size takes far longer.
constexpr double enough = 30;

double secondsOf(const std::function<void()>& function)
{
    const auto begin = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::string repeated(std::string_view text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

// One array in another, the innermost an empty one, in the binary format, whatever its depth.
Data nestedBinary(std::size_t depth)
{
    Data bytes{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    const auto append = [&](std::uint64_t number, int width) {
        while (width-- > 0)
            bytes.push_back(static_cast<std::uint8_t>(number >> (8 * width)));
    };
    for (std::size_t i = 1; i < depth; ++i) {
        append(0xA1, 1);
        append(i, 4);
    }
    append(0xA0, 1);
    const std::size_t table = bytes.size();
    for (std::size_t i = 0; i < depth; ++i)
        append(8 + 5 * i, 4);
    append(0x0404, 8);
    append(depth, 8);
    append(0, 8);
    append(table, 8);
    return bytes;
}

// So many levels, each an array of ten of the next.
Data laughs(std::uint8_t levels, const std::string& innermost)
{
    std::vector<std::string> objects;
    for (std::uint8_t i = 1; i <= levels; ++i)
        objects.push_back("\xAA" + std::string(10, static_cast<char>(i)));
    objects.push_back(innermost);
    return binary(objects);
}

} // namespace

TEST_CASE("512 collections inside each other are written and read, in every format")
{
    for (const PropertyList& innermost : {PropertyList(Array()), PropertyList(Array{"text"})}) {
        const PropertyList value = nested(511, innermost);
        const auto bytes = binaryPropertyList(value);
        REQUIRE(bytes);
        CHECK(propertyListWithData(*bytes).value() == value);
    }
    CHECK(propertyListWithData(nestedBinary(512)).value() == nested(511));
    CHECK(read(xml(repeated("<array>", 512) + repeated("</array>", 512))).value() == nested(511));
    CHECK(read(repeated("(", 512) + repeated(")", 512)).value() == nested(511));
    CHECK(read(repeated("{a=", 512) + "b" + repeated(";}", 512)));
}

TEST_CASE("513 collections inside each other are too many, in every format")
{
    CHECK_FALSE(binaryPropertyList(nested(512)));
    CHECK_FALSE(binaryPropertyList(nested(512, Array{"text"})));
    CHECK(isDamaged(nestedBinary(513)));
    CHECK(isDamaged(xml(repeated("<array>", 513) + repeated("</array>", 513))));
    CHECK(isDamaged(xml(repeated("<dict><key>a</key>", 513) + "<true/>" + repeated("</dict>", 513))));
    CHECK(isDamaged(repeated("(", 513) + repeated(")", 513)));
    CHECK(isDamaged(repeated("{a=", 513) + "b" + repeated(";}", 513)));
}

TEST_CASE("input nested a million deep is refused without a deep recursion")
{
    CHECK(isDamaged(nestedBinary(1'000'000)));
    CHECK(isDamaged(xml(repeated("<array>", 1'000'000))));
    CHECK(isDamaged(repeated("(", 1'000'000)));
    CHECK(isDamaged(repeated("{a=", 1'000'000)));
}

TEST_CASE("a small input that would unfold into a vast value is refused at once")
{
    CHECK(secondsOf([] { CHECK(isDamaged(laughs(100, "\x09"))); }) < 1);
    CHECK(secondsOf([] { CHECK(isDamaged(laughs(9, "\x09"))); }) < 1);
    CHECK(secondsOf([] { CHECK(isDamaged(laughs(20, "\x5F\x11\x7F\xFF" + std::string(0x7FFF, 'x')))); }) < 1);
    // Four million values of 130 bytes: an array of fourteen of fourteen, six times.
    std::vector<std::string> objects;
    for (char next = 1; next <= 6; ++next)
        objects.push_back("\xAE" + std::string(14, next));
    objects.push_back("\xA0");
    const Data vast = binary(objects);
    CHECK(vast.size() < 170);
    CHECK(isDamaged(vast));
}

TEST_CASE("an input may unfold into a value for each of its bytes and a thousand more, shared ones counted each time")
{
    // An array of arrays of empty arrays, filled up with what nothing refers to.
    const auto unfolding = [](std::size_t outer, std::size_t inner, std::size_t size) {
        const auto array = [](std::size_t count, char element) {
            return std::string{'\xAF', '\x11', static_cast<char>(count >> 8), static_cast<char>(count)}
            + std::string(count, element);
        };
        const std::vector<std::string> objects{array(outer, '\1'), array(inner, '\2'), "\xA0", "\x09"};
        const std::size_t bare = binary(objects).size();
        REQUIRE(size >= bare);
        Data bytes = binary({objects[0], objects[1], objects[2], std::string(size - bare + 1, '\x09')});
        REQUIRE(bytes.size() == size);
        return bytes;
    };
    // 1 + 30 * (1 + 100) values.
    CHECK(propertyListWithData(unfolding(30, 100, 2031)));
    CHECK(isDamaged(unfolding(30, 100, 2030)));
    // 1 + 300 * (1 + 1000) values.
    CHECK(propertyListWithData(unfolding(300, 1000, 299'301)));
    CHECK(isDamaged(unfolding(300, 1000, 299'300)));
}

TEST_CASE("the keys of a shared dictionary count each time")
{
    const auto shared = [](const std::string& innermost) {
        const auto fifteen = [](char element) { return "\xAF\x10\x0F" + std::string(15, element); };
        return binary({fifteen('\1'), fifteen('\2'), innermost, "\x51k", "\x51l"});
    };
    // 1 + 15 * (1 + 15 * (1 + 2)) = 691 values in 100 bytes, and with their keys 1141.
    CHECK(propertyListWithData(shared("\xA2\3\4")));
    CHECK(isDamaged(shared("\xD2\3\4\3\4")));
}

TEST_CASE("a long text may be shared, but not unfold into many times the input")
{
    const auto shared = [](std::size_t size, std::size_t count) {
        const std::string text = "\x5F\x12"s + static_cast<char>(size >> 24) + static_cast<char>(size >> 16)
            + static_cast<char>(size >> 8) + static_cast<char>(size) + std::string(size, 'x');
        return binary({"\xAF\x10"s + static_cast<char>(count) + std::string(count, '\1'), text});
    };
    CHECK(propertyListWithData(shared(1 << 20, 8)));
    CHECK(isDamaged(shared(1 << 20, 200)));
    CHECK(propertyListWithData(shared(10'000, 60)));
    CHECK(isDamaged(shared(10'000, 80)));
}

TEST_CASE("whatever is written can be read, however often one text is in it")
{
    for (const std::size_t size : {1U, 31U, 32U, 33U, 1000U}) {
        for (const char* first : {"x", "é"}) {
            CAPTURE(size);
            CAPTURE(first);
            const std::string text =
                first + std::string(size - std::min<std::size_t>(size, std::string(first).size()), 'x');
            const PropertyList value(Array(5000, PropertyList(text)));
            CHECK(propertyListWithData(binaryPropertyList(value).value()).value() == value);
            const platform::Error error{"domain", 1, {{"list", value}}, nullptr};
            CHECK(platform::unarchivedError(platform::archivedError(error), true).value() == error);
        }
    }
}

TEST_CASE("a million different numbers are written and read in time linear in their count")
{
    Array array;
    for (std::int64_t i = 0; i < 1'000'000; ++i)
        array.push_back(i * 7919);
    const PropertyList value(std::move(array));
    CHECK(secondsOf([&] { CHECK(propertyListWithData(binaryPropertyList(value).value()).value() == value); }) < enough);
}

TEST_CASE("a million small dictionaries are written within what a bus carries in one message, and read again")
{
    constexpr std::size_t mostOfBus = 32U << 20;
    Array array;
    for (int i = 0; i < 1'000'000; ++i)
        array.emplace_back(Dictionary{{"Weekday", i % 7 + 1}, {"Hour", i % 24}, {"Minute", i % 60}});
    const PropertyList value(std::move(array));
    const Data bytes = binaryPropertyList(value).value();
    CHECK(bytes.size() < mostOfBus);
    CHECK(propertyListWithData(bytes).value() == value);
}

TEST_CASE("three hundred thousand different keys are written and read in time linear in their count")
{
    Dictionary dictionary;
    for (int i = 0; i < 300'000; ++i)
        dictionary.set("key" + std::to_string(i), true);
    const PropertyList value(std::move(dictionary));
    CHECK(secondsOf([&] { CHECK(propertyListWithData(binaryPropertyList(value).value()).value() == value); }) < enough);

    std::string text = "<dict>";
    for (const auto& entry : *value.dictionary())
        text += "<key>" + entry.key + "</key><true/>";
    CHECK(secondsOf([&] { CHECK(read(xml(text + "</dict>")).value() == value); }) < enough);
}

TEST_CASE("ten megabytes of data are written and read")
{
    const PropertyList value(Data(10'000'000, 0x5A));
    CHECK(propertyListWithData(binaryPropertyList(value).value()).value() == value);
}

TEST_CASE("large texts are read in time linear in their size, in every format")
{
    const auto quick = [](const std::string& text, bool isSound) {
        return secondsOf([&] { CHECK(isDamaged(text) != isSound); }) < enough;
    };
    constexpr std::size_t many = 300'000;
    CHECK(quick(xml("<string>" + repeated("&amp;", many) + "</string>"), true));
    CHECK(quick(xml("<array>" + repeated("<string/>", many) + "</array>"), true));
    CHECK(quick(xml("<array>" + repeated("<!-- -->", many) + "</array>"), true));
    CHECK(quick(xml("<string>" + repeated("<![CDATA[]]>", many) + "</string>"), true));
    CHECK(quick(xml(repeated("<", many)), false));
    CHECK(quick(xml(repeated("<array", many)), false));
    CHECK(quick(xml("<string>" + repeated("&", many) + "</string>"), false));
    CHECK(quick("(" + repeated("a,", many) + ")", true));
    CHECK(quick(repeated("\"a\" = \"b\";\n", many), true));
    CHECK(quick(repeated("/* */", many) + "a", true));
    CHECK(quick(repeated("/*", many), false));
    CHECK(quick("\"" + repeated("\\U00e9", many) + "\"", true));
    CHECK(quick("(" + repeated("\"", many), false));
}

TEST_CASE("a property list cut off at any byte is damage or a value")
{
    const Data binaryBytes = binaryPropertyList(everyType()).value();
    const std::string xmlText =
        xml("<dict><key>a</key><array><integer>1</integer><string>b &amp; <![CDATA[c]]></string>"
            "<real>1.5</real><date>2001-01-01T00:00:00Z</date><data>AAEC</data><true/></array>"
            "<!-- end --></dict>");
    std::string utf16Text = "\xFF\xFE";
    for (const char letter : xmlText)
        utf16Text += {letter, '\0'};
    const std::string oldText = "// sample\n{ \"a\\n\\U00e9\" = (b, \"c d\", <0fbd>, {e = f;}); /* end */ }";
    const platform::Error error{"domain", 1, *everyType().dictionary(),
                                std::make_shared<const platform::Error>(platform::Error{"inner", 2, {}, nullptr})};
    const Data archive = platform::archivedError(error);

    const auto cutOff = [](std::span<const std::uint8_t> bytes, const auto& readBytes) {
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            // A copy of exactly that size, so that a checking build sees any look beyond its end.
            const Data part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            readBytes(part);
        }
    };
    const auto plain = [](const Data& part) {
        if (const auto value = propertyListWithData(part))
            CHECK(binaryPropertyList(*value));
        else
            CHECK(value.error().domain == platform::CocoaErrorDomain);
    };
    // Up to the end of the header it could still be a plain string.
    cutOff(binaryBytes, [](const Data& part) { CHECK(isDamaged(part) == (part.empty() || part.size() >= 8)); });
    cutOff(bytesOf(xmlText), plain);
    cutOff(bytesOf(utf16Text), plain);
    cutOff(bytesOf(oldText), plain);
    cutOff(archive, [](const Data& part) {
        CHECK_FALSE(platform::unarchivedError(part, true));
        CHECK_FALSE(platform::unarchivedError(part, false));
    });
}
