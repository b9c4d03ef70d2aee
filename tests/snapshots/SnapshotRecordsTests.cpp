#include "diagnostics/snapshots/SnapshotRecords.h"
#include "tests/snapshots/support/RecordBuilder.h"

#include <algorithm>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>
#include <memory>
#include <random>

namespace {

RecordBuilder complete(std::string name, std::uint64_t identifier = 7, std::int64_t time = 1'700'000'000)
{
    return {.name = std::move(name), .objectIdentifier = identifier, .creationTime = time};
}

// In memory of exactly this size, so that a reader that goes past the end is caught.
struct Exact {
    explicit Exact(const std::vector<std::byte>& bytes) : size(bytes.size()), memory(new std::byte[bytes.size()])
    {
        std::copy(bytes.begin(), bytes.end(), memory.get());
    }
    std::span<const std::byte> span() const { return {memory.get(), size}; }

    std::size_t size;
    std::unique_ptr<std::byte[]> memory;
};

std::vector<SnapshotRecord> walk(const Exact& buffer, int count)
{
    return snapshotRecords(buffer.span(), count);
}

} // namespace

TEST_CASE("a record gives its name, its identifier and the whole seconds of its creation")
{
    const Exact buffer(complete("com.example.2026-11-21-070315.local", 0x123456789ABCDEF0, 1'795'244'595).bytes());
    const auto records = walk(buffer, 1);
    REQUIRE(records.size() == 1);
    CHECK(records[0].name == "com.example.2026-11-21-070315.local");
    CHECK(records[0].objectIdentifier == 0x123456789ABCDEF0);
    CHECK(records[0].creationTime == 1'795'244'595);
}

TEST_CASE("records follow one another by their lengths, padding included")
{
    auto padded = complete("first", 1);
    padded.padding = 5;
    const Exact buffer(joinedRecords({padded, complete("second", 2), complete("third", 3)}));
    const auto records = walk(buffer, 3);
    REQUIRE(records.size() == 3);
    CHECK(records[0].name == "first");
    CHECK(records[1].name == "second");
    CHECK(records[2].name == "third");
    CHECK(records[2].objectIdentifier == 3);
}

TEST_CASE("no more records are read than the count says")
{
    const Exact buffer(joinedRecords({complete("first"), complete("second")}));
    CHECK(walk(buffer, 1).size() == 1);
    CHECK(walk(buffer, 0).empty());
    CHECK(walk(buffer, -1).empty());
}

TEST_CASE("an attribute that was not returned takes no room")
{
    const Exact buffer(joinedRecords(
        {{.name = "named"}, {.objectIdentifier = 9}, {.creationTime = -5}, {.name = "both", .creationTime = 4}, {}}));
    const auto records = walk(buffer, 5);
    REQUIRE(records.size() == 5);
    CHECK(records[0].name == "named");
    CHECK_FALSE(records[0].objectIdentifier);
    CHECK_FALSE(records[0].creationTime);
    CHECK_FALSE(records[1].name);
    CHECK(records[1].objectIdentifier == 9);
    CHECK(records[2].creationTime == -5);
    CHECK(records[3].name == "both");
    CHECK_FALSE(records[3].objectIdentifier);
    CHECK(records[3].creationTime == 4);
    CHECK_FALSE(records[4].name);
}

TEST_CASE("masks of the other groups do not move the fields")
{
    auto record = complete("name");
    record.otherMasks = 0xFFFFFFFF;
    const auto bytes = record.bytes();
    CHECK(snapshotRecords(bytes, 1).front().name == "name");
}

TEST_CASE("the name ends at its first zero byte and may be empty")
{
    const auto cut = complete(std::string("ab\0cd", 5)).bytes();
    CHECK(snapshotRecords(cut, 1).front().name == "ab");
    const auto empty = complete("").bytes();
    CHECK(snapshotRecords(empty, 1).front().name == "");
}

TEST_CASE("a name outside ASCII is kept, and one that is not UTF-8 is not there")
{
    const auto japanese = complete("スナップショット").bytes();
    CHECK(snapshotRecords(japanese, 1).front().name == "スナップショット");
    const auto broken = complete("ab\xFF").bytes();
    CHECK_FALSE(snapshotRecords(broken, 1).front().name);
    CHECK(snapshotRecords(broken, 1).front().objectIdentifier == 7);
}

TEST_CASE("a name without its zero byte is not there")
{
    auto record = complete("endless");
    record.endsWithZero = false;
    const Exact buffer(record.bytes());
    CHECK_FALSE(walk(buffer, 1).front().name);
    CHECK(walk(buffer, 1).front().creationTime);
}

TEST_CASE("a name whose reference leads out of the record is not there")
{
    for (const std::int32_t offset :
         {-25, -1000, 1000, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        CAPTURE(offset);
        auto record = complete("name");
        record.nameOffset = offset;
        const Exact buffer(record.bytes());
        CHECK_FALSE(walk(buffer, 1).front().name);
        CHECK(walk(buffer, 1).front().objectIdentifier == 7);
    }
    for (const std::uint32_t length : {6u, 1000u, 0x80000000u, 0xFFFFFFFFu}) {
        CAPTURE(length);
        auto record = complete("name");
        record.nameLength = length;
        const Exact buffer(record.bytes());
        CHECK_FALSE(walk(buffer, 1).front().name);
    }
}

TEST_CASE("a name may not reach into the next record")
{
    auto record = complete("name");
    record.nameLength = 40;
    const Exact buffer(joinedRecords({record, complete("next")}));
    const auto records = walk(buffer, 2);
    REQUIRE(records.size() == 2);
    CHECK_FALSE(records[0].name);
    CHECK(records[1].name == "next");
}

TEST_CASE("a record whose length is too small or too large ends the walk")
{
    for (const std::uint32_t length : {0u, 1u, 4u, 23u, 10'000u, 0xFFFFFFFFu}) {
        CAPTURE(length);
        auto damaged = complete("damaged");
        damaged.length = length;
        const Exact buffer(joinedRecords({complete("whole"), damaged, complete("after")}));
        const auto records = walk(buffer, 3);
        REQUIRE(records.size() == 1);
        CHECK(records[0].name == "whole");
    }
}

TEST_CASE("a count that is larger than the buffer holds ends with the buffer")
{
    const Exact buffer(joinedRecords({complete("one"), complete("two")}));
    CHECK(walk(buffer, 1000).size() == 2);
    CHECK(snapshotRecords({}, 1).empty());
}

TEST_CASE("a record that is cut short keeps the fields that are whole")
{
    const auto whole = complete("name").bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        CAPTURE(size);
        std::vector<std::byte> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const auto length = static_cast<std::uint32_t>(size);
        if (size >= sizeof length)
            std::memcpy(cut.data(), &length, sizeof length);
        const auto records = walk(Exact(cut), 1);
        REQUIRE(records.size() == (size < 24 ? 0 : 1));
        if (size < 24)
            continue;
        CHECK_FALSE(records[0].name);
        CHECK(records[0].objectIdentifier.has_value() == (size >= 40));
        CHECK(records[0].creationTime.has_value() == (size >= 56));
    }
}

TEST_CASE("buffers damaged anywhere never lead the walk out of them")
{
    const auto whole = joinedRecords({complete("one", 1), complete("two two", 2), complete("three", 3)});
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same damage each time
    int readable = 0;
    for (int round = 0; round < 20'000; ++round) {
        auto damaged = whole;
        for (int change = 0; change < 1 + round % 4; ++change)
            damaged[random() % damaged.size()] = static_cast<std::byte>(random());
        const Exact buffer(damaged);
        for (const auto& record : walk(buffer, 3)) {
            if (!record.name)
                continue;
            ++readable;
            const auto* const begin = reinterpret_cast<const char*>(buffer.memory.get());
            REQUIRE(record.name->data() >= begin);
            REQUIRE(record.name->data() + record.name->size() < begin + buffer.size);
        }
    }
    CHECK(readable > 0);
}
