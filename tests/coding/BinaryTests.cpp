#include "tests/coding/Samples.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <doctest/doctest.h>
#include <limits>

using namespace std::string_literals;
using platform::Array;
using platform::binaryPropertyList;
using platform::binaryPropertyListWithData;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;
using platform::propertyListWithData;
using platform::UID;

namespace {

std::string_view textOf(const Data& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The value of a binary property list of one object.
platform::Result<PropertyList> readObject(const std::string& object)
{
    return propertyListWithData(binary({object}));
}

} // namespace

TEST_CASE("a value is written in the binary format byte for byte")
{
    const Data expected{'b', 'p', 'l', 'i', 's', 't', '0', '0', 0x57, 'M', 'i', 'n', 'u', 't', 'e', 's', 0x10, 90, 0xD1,
                        0,   1,   8,   16,  18,  0,   0,   0,   0,    0,   0,   1,   1,   0,   0,   0,   0,    0,  0,
                        0,   3,   0,   0,   0,   0,   0,   0,   0,    2,   0,   0,   0,   0,   0,   0,   0,    21};
    CHECK(binaryPropertyList(Dictionary{{"Minutes", 90}}).value() == expected);
}

TEST_CASE("every type of value is read back as it was written")
{
    const PropertyList value = everyType();
    const auto readBack = propertyListWithData(binaryPropertyList(value).value());
    REQUIRE(readBack);
    CHECK(*readBack == value);
    CHECK(readBack->dictionary()->find("yes")->type() == PropertyList::Type::Boolean);
    CHECK(readBack->dictionary()->find("small")->type() == PropertyList::Type::Integer);
    CHECK(readBack->dictionary()->find("real")->type() == PropertyList::Type::Real);
}

TEST_CASE("a value of any type can be the whole property list")
{
    const PropertyList values = everyType();
    for (const auto& [key, value] : *values.dictionary())
        CHECK(propertyListWithData(binaryPropertyList(value).value()).value() == value);
    CHECK(propertyListWithData(binaryPropertyList(PropertyList()).value()).value() == PropertyList(Dictionary()));
}

TEST_CASE("a dictionary keeps its order when it is written and read")
{
    const auto value = propertyListWithData(binaryPropertyList(Dictionary{{"z", 1}, {"a", 2}, {"m", 3}}).value());
    REQUIRE(value);
    std::string keys;
    for (const auto& entry : *value->dictionary())
        keys += entry.key;
    CHECK(keys == "zam");
}

TEST_CASE("a date is its eight bytes, of any time and also when it is no number")
{
    const std::uint64_t noNumber = 0x7FF8'0000'0000'1234;
    for (const double seconds : {0.0, -0.0, 0.1, -0.3, 1e-9, -978307200.0, 5e9, -63114076800.0, 63113904000.0, 1e300,
                                 5e-324, std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), std::bit_cast<double>(noNumber)}) {
        CAPTURE(seconds);
        std::string object = "\x33";
        for (int shift = 56; shift >= 0; shift -= 8)
            object += static_cast<char>(std::bit_cast<std::uint64_t>(seconds) >> shift);
        const PropertyList value = readObject(object).value();
        CHECK(std::bit_cast<std::uint64_t>(value.date()->secondsSinceReferenceDate)
              == std::bit_cast<std::uint64_t>(seconds));
        CHECK(value == PropertyList(Date{seconds}));
        const Data written = binaryPropertyList(value).value();
        CHECK(std::string(written.begin() + 8, written.begin() + 17) == object);
    }
}

TEST_CASE("reals that are no finite numbers are read back")
{
    for (const double real : {std::nan(""), std::numeric_limits<double>::infinity(), -0.0, 5e-324})
        CHECK(propertyListWithData(binaryPropertyList(real).value()).value() == PropertyList(real));
}

TEST_CASE("a value that cannot be written is an error")
{
    const auto fails = [](const PropertyList& value) {
        const auto bytes = binaryPropertyList(value);
        return !bytes && bytes.error().domain == platform::CocoaErrorDomain && bytes.error().code == 3852;
    };
    CHECK(fails("\xFF"));
    CHECK(fails("a\0b"s));
    CHECK(fails(Dictionary{{"\xC3", 1}}));
    CHECK(fails(Array{"fine", Array{"\xED\xA0\x80"}}));
}

TEST_CASE("python3 reads what is written, and what it writes is read, in both of its formats")
{
    if (!hasPython())
        return;
    const TemporaryDirectory folder;
    const PropertyList value = everyType();
    const std::string ours = folder.write("ours.plist", textOf(binaryPropertyList(value).value()));
    python(R"(
import plistlib, sys
with open(sys.argv[1], 'rb') as file:
    value = plistlib.load(file)
assert value['yes'] is True and value['no'] is False
assert value['unsigned'] == 2**63 and value['largest unsigned'] == 2**64 - 1
assert value['largest'] == 2**63 - 1 and value['smallest'] == -2**63 and value['negative'] == -1
assert value['real'] == 0.1 and str(value['date']) == '2022-09-04 16:00:00', value['date']
assert value['accents'] == 'é € 😀' and value['ключ'] == 'non-ASCII key'
assert value['data'] == bytes([0, 1, 2, 253, 254, 255]) and value['no data'] == b''
assert value['many'] == list(range(1, 18)) and value[''] == 'empty key'
assert list(value)[:3] == ['yes', 'no', 'small']
for path, format in (sys.argv[2], plistlib.FMT_BINARY), (sys.argv[3], plistlib.FMT_XML):
    with open(path, 'wb') as file:
        plistlib.dump(value, file, fmt=format, sort_keys=False)
)",
           {ours, folder.file("binary.plist"), folder.file("xml.plist")});
    for (const char* name : {"binary.plist", "xml.plist"}) {
        CAPTURE(name);
        const auto readBack = propertyListWithData(contents(folder.file(name)));
        REQUIRE(readBack);
        CHECK(*readBack == value);
    }
}

TEST_CASE("python3 reads large values with wide references and offsets")
{
    if (!hasPython())
        return;
    const TemporaryDirectory folder;
    Array array;
    for (int i = 0; i < 70000; ++i)
        array.push_back(i * 1000);
    array.push_back("x" + std::string(100000, 'y'));
    const std::string file = folder.write("large.plist", textOf(binaryPropertyList(array).value()));
    CHECK(python("import plistlib, sys\nvalue = plistlib.load(open(sys.argv[1], 'rb'))\n"
                 "print(len(value), sum(value[:70000]), len(value[-1]))",
                 {file})
          == "70001 2449965000000 100001\n");
}

TEST_CASE("equal strings of up to 32 bytes are written once")
{
    const auto sizeOf = [](const std::string& text) {
        return binaryPropertyList(Array(100, PropertyList(text))).value().size();
    };
    CHECK(sizeOf(std::string(32, 'x')) < 200);
    CHECK(sizeOf(std::string(33, 'x')) > 3300);
    CHECK(sizeOf("é" + std::string(30, 'x')) < 250);
}

TEST_CASE("integers of one, two and four bytes have no sign, and of eight bytes have one")
{
    CHECK(readObject("\x10\xFF").value() == PropertyList(255));
    CHECK(readObject("\x11\xFF\xFF").value() == PropertyList(65535));
    CHECK(readObject("\x12\xFF\xFF\xFF\xFF").value() == PropertyList(std::int64_t{4294967295}));
    CHECK(readObject("\x13" + std::string(8, '\xFF')).value() == PropertyList(-1));
}

TEST_CASE("an integer of sixteen bytes is read when it fits into 64 bits, with a sign or without")
{
    const auto sixteen = [](char high, const std::string& low) { return "\x14" + std::string(8, high) + low; };
    const auto smallest = "\x80" + std::string(7, '\0');
    CHECK(readObject(sixteen('\0', std::string(7, '\0') + "\x07")).value() == PropertyList(7));
    CHECK(readObject(sixteen('\0', smallest)).value() == PropertyList(std::uint64_t{1} << 63));
    CHECK(readObject(sixteen('\0', std::string(8, '\xFF'))).value() == PropertyList(UINT64_MAX));
    CHECK(readObject(sixteen('\xFF', std::string(8, '\xFF'))).value() == PropertyList(-1));
    CHECK(readObject(sixteen('\xFF', smallest)).value() == PropertyList(INT64_MIN));
    CHECK(isDamaged(binary({sixteen('\xFF', "\x7F" + std::string(7, '\xFF'))})));
    CHECK(isDamaged(binary({sixteen('\1', std::string(8, '\0'))})));
    CHECK(isDamaged(binary({sixteen('\x80', std::string(8, '\0'))})));
}

TEST_CASE("an integer from 2^63 on is written as it was read")
{
    for (const std::uint64_t number : {std::uint64_t{1} << 63, (std::uint64_t{1} << 63) + 1, UINT64_MAX}) {
        const Data bytes = binaryPropertyList(number).value();
        CHECK(bytes[8] == 0x14);
        const PropertyList value = propertyListWithData(bytes).value();
        CHECK(value.type() == PropertyList::Type::Unsigned);
        CHECK(*value.unsignedInteger() == number);
        CHECK(binaryPropertyList(value).value() == bytes);
    }
}

TEST_CASE("a UID of one to eight bytes is read, and written in as few as it needs")
{
    CHECK(readObject("\x80\x05").value() == PropertyList(UID{5}));
    CHECK(readObject("\x81\x01\x00"s).value() == PropertyList(UID{256}));
    CHECK(readObject("\x82\x01\x00\x00"s).value() == PropertyList(UID{65536}));
    CHECK(readObject("\x87" + std::string(8, '\xFF')).value() == PropertyList(UID{UINT64_MAX}));
    CHECK(isDamaged(binary({"\x88" + std::string(9, '\0')})));
    CHECK(isDamaged(binary({"\x8F" + std::string(16, '\0')})));
    for (const std::uint64_t index : {std::uint64_t{0}, std::uint64_t{255}, std::uint64_t{256}, UINT64_MAX}) {
        const Data bytes = binaryPropertyList(Array{UID{index}}).value();
        CHECK(propertyListWithData(bytes).value() == PropertyList(Array{UID{index}}));
    }
    CHECK(binaryPropertyList(UID{255}).value()[8] == 0x80);
    CHECK(binaryPropertyList(UID{256}).value()[8] == 0x81);
}

TEST_CASE("the binary reader takes nothing but the binary format")
{
    CHECK(binaryPropertyListWithData(binaryPropertyList(everyType()).value()).value() == everyType());
    for (const std::string& text : {xml("<true/>"), "{ a = b; }"s, "text"s, ""s, "bplist01"s}) {
        CAPTURE(text);
        const auto value = binaryPropertyListWithData(bytesOf(text));
        REQUIRE_FALSE(value);
        CHECK(value.error().code == 3840);
    }
}

TEST_CASE("the binary reader can be given a number of values, keys among them")
{
    const Data bytes = binaryPropertyList(Array{1, 2, Dictionary{{"k", true}}}).value();
    CHECK(binaryPropertyListWithData(bytes, 6));
    CHECK_FALSE(binaryPropertyListWithData(bytes, 5));
    CHECK_FALSE(binaryPropertyListWithData(bytes, 0));
    CHECK(binaryPropertyListWithData(binaryPropertyList(true).value(), 1));
}

TEST_CASE("a real of four bytes is read")
{
    CHECK(readObject("\x22\x3F\xC0\0\0"s).value() == PropertyList(1.5));
}

TEST_CASE("a key given twice has its last value")
{
    CHECK(propertyListWithData(binary({"\xD2\1\1\2\3", "\x51k", "\x10\x01", "\x10\x02"})).value()
          == PropertyList(Dictionary{{"k", 2}}));
}

TEST_CASE("a shared object is read wherever it is referred to")
{
    CHECK(propertyListWithData(binary({"\xA3\1\1\1", "\xA1\2", "\x51k"})).value()
          == PropertyList(Array{Array{"k"}, Array{"k"}, Array{"k"}}));
}

TEST_CASE("an object that no property list has is damage")
{
    const std::vector<std::string> objects{
        "\0"s,  // null
        "\x01", // unknown
        "\x0C", // address
        "\x0E", // identifier
        "\x0F", // fill
        "\x15" + std::string(32, '\0'),
        "\x21\x01\x01", // a real of two bytes
        "\x24" + std::string(16, '\0'),
        "\x32" + std::string(4, '\0'),
        "\x70",
        "\x90",
        "\xB0",
        "\xC1\0"s, // a set
        "\xE0",
        "\xF0",
    };
    for (const std::string& object : objects) {
        CAPTURE(static_cast<int>(static_cast<unsigned char>(object[0])));
        CHECK(isDamaged(binary({object})));
    }
}

TEST_CASE("text that is no text is damage")
{
    CHECK(isDamaged(binary({"\x51\x80"})));
    CHECK(isDamaged(binary({"\x51\0"s})));
    CHECK(isDamaged(binary({"\x61\0\0"s})));
    CHECK(isDamaged(binary({"\x61\xD8\x00"s})));
    CHECK(isDamaged(binary({"\x61\xDC\x00"s})));
    CHECK(isDamaged(binary({"\x62\xD8\x00\x00\x41"s})));
    CHECK(isDamaged(binary({"\x62\xD8\x3D\xD8\x3D"s})));
    CHECK(isDamaged(binary({"\x62\xDE\x00\xD8\x3D"s})));
    CHECK(propertyListWithData(binary({"\x62\xD8\x3D\xDE\x00"s})).value() == PropertyList("😀"));
}

TEST_CASE("a key that is no string is damage")
{
    CHECK(isDamaged(binary({"\xD1\1\2", "\x10\x01", "\x10\x02"})));
    CHECK(isDamaged(binary({"\xD1\1\2", "\xA0", "\x10\x02"})));
}

TEST_CASE("a count or reference beyond the objects is damage")
{
    CHECK(isDamaged(binary({"\xA1\1"})));
    CHECK(isDamaged(binary({"\xA1\xFF"})));
    CHECK(isDamaged(binary({"\xA9\1", "\x09"})));
    CHECK(isDamaged(binary({"\x5F\x10\xFF"
                            "abc"})));
    CHECK(isDamaged(binary({"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})));
    CHECK(isDamaged(binary({"\x6F\x13\x80\0\0\0\0\0\0\0"s})));
    CHECK(isDamaged(binary({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})));
    CHECK(isDamaged(binary({"\xDF\x13\x40\0\0\0\0\0\0\0"s})));
    CHECK(isDamaged(binary({"\x5F\x09"})));
    CHECK(isDamaged(binary({"\x5F\x14" + std::string(16, '\0')})));
    CHECK(isDamaged(binary({"\x5F"})));
    CHECK(isDamaged(binary({"\x09"}, 1)));
}

TEST_CASE("an object whose bytes reach into the table of offsets is damage, and objects may lie on each other")
{
    CHECK(isDamaged(binary({"\x09", "\x13\0\0\0\0\0\0\0"s}, 1)));
    CHECK(isDamaged(binary({"\x09", "\x33"}, 1)));
    CHECK(isDamaged(binary({"\x09", "\x23\0\0\0"s}, 1)));
    CHECK(isDamaged(binary({"\x09", "\x83\0"s}, 1)));
    CHECK(isDamaged(binary({"\x09", "\x62\0A\0"s}, 1)));
    CHECK(isDamaged(binary({"\x09",
                            "\x45"
                            "abc"},
                           1)));
    // The second object lies in the data of the first.
    Data bytes = binary({"\xA2\1\2", "\x42\x10\x05", "\x09"});
    bytes[bytes.size() - 32 - 1] = 12;
    CHECK(propertyListWithData(bytes).value() == PropertyList(Array{Data{0x10, 5}, 5}));
}

TEST_CASE("a table or an offset out of range is damage")
{
    const Data sound = binary({"\xA1\1", "\x09"});
    REQUIRE(propertyListWithData(sound));
    const auto changed = [&](std::size_t fromEnd, std::initializer_list<std::uint8_t> bytes) {
        Data copy = sound;
        std::copy(bytes.begin(), bytes.end(), copy.end() - static_cast<std::ptrdiff_t>(fromEnd));
        return copy;
    };
    CHECK(isDamaged(changed(8, {0, 0, 0, 0, 0, 0, 0, 7})));                         // the table in the header
    CHECK(isDamaged(changed(8, {0, 0, 0, 0, 0, 0, 0, 8})));                         // over the objects
    CHECK(isDamaged(changed(8, {0, 0, 0, 0, 0, 0, 0, 19})));                        // in the trailer
    CHECK(isDamaged(changed(8, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}))); // beyond everything
    CHECK(isDamaged(changed(24, {0, 0, 0, 0, 0, 0, 0, 3})));                        // more objects than offsets
    CHECK(isDamaged(changed(24, {0x40, 0, 0, 0, 0, 0, 0, 0})));                     // whose size overflows
    CHECK(isDamaged(changed(16, {0, 0, 0, 0, 0, 0, 0, 2})));                        // a root beyond the objects
    CHECK(isDamaged(changed(36, {0, 0, 0, 7})));                                    // an offset in the header
    CHECK(isDamaged(changed(36, {0, 0, 0, 11})));                                   // in the table
    CHECK(isDamaged(changed(36, {0xFF, 0xFF, 0xFF, 0xFF})));                        // beyond everything
    CHECK(isDamaged(changed(26, {0})));                                             // offsets of no bytes
    CHECK(isDamaged(changed(26, {9})));
    CHECK(isDamaged(changed(25, {0}))); // references of no bytes
    CHECK(isDamaged(changed(25, {9})));
}

TEST_CASE("an object that contains itself is damage")
{
    CHECK(isDamaged(binary({"\xA1\0"s})));
    CHECK(isDamaged(binary({"\xA1\1", "\xA1\2", "\xA1\0"s})));
    CHECK(isDamaged(binary({"\xD1\1\0"s, "\x51k"})));
}

TEST_CASE("any change of the trailer is damage or a value")
{
    const Data sound = binaryPropertyList(everyType()).value();
    for (std::size_t i = sound.size() - 32; i < sound.size(); ++i) {
        for (int byte = 0; byte < 256; ++byte) {
            Data changed = sound;
            changed[i] = static_cast<std::uint8_t>(byte);
            const auto value = propertyListWithData(changed);
            CHECK((value || value.error().domain == platform::CocoaErrorDomain));
        }
    }
}

TEST_CASE("any change of one byte is damage or a value")
{
    const Data sound = binaryPropertyList(everyType()).value();
    for (std::size_t i = 0; i < sound.size(); ++i) {
        for (const int change : {1, 0x10, 0x80, 0xFF}) {
            Data changed = sound;
            changed[i] = static_cast<std::uint8_t>(changed[i] ^ change);
            const auto value = propertyListWithData(changed);
            if (value)
                CHECK(binaryPropertyList(*value));
            else
                CHECK(value.error().domain == platform::CocoaErrorDomain);
        }
    }
}
