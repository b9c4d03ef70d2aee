#include "platform/JSONRecords.h"
#include "platform/Unicode.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <simdjson.h>
#include <string>
#include <vector>

using platform::JSONField;

namespace {

constexpr std::array<std::string_view, 2> fuzzedKeys = {"a", "eventMessage"};

// What is read of an array that comes in pieces of this size; nothing when it is none.
std::optional<std::vector<std::string>> texts(std::string_view json, std::size_t piece)
{
    std::vector<std::string> found;
    platform::JSONRecords records(fuzzedKeys, [&](std::span<const JSONField> fields) {
        for (const auto& field : fields) {
            require(platform::isValidUTF8(field.text));
            require(field.kind != JSONField::Kind::Absent || field.text.empty());
            found.emplace_back(field.text);
        }
    });
    for (std::size_t place = 0; place < json.size(); place += piece)
        records.append(json.substr(place, piece));
    return records.finish() ? std::optional(found) : std::nullopt;
}

} // namespace

// The first byte is the size of the pieces, the rest the array. However it comes, the same is read of it; and it is
// read when the parser takes the whole, or stumbles only over a number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string json(reinterpret_cast<const char*>(bytes + 1), size - 1);
    const auto whole = texts(json, std::max<std::size_t>(json.size(), 1));
    require(whole == texts(json, std::max<std::size_t>(bytes[0], 1)));

    simdjson::dom::parser parser;
    simdjson::dom::array elements;
    const auto failure = parser.parse(json).get_array().get(elements);
    const auto brackets = std::ranges::count_if(json, [](char each) { return each == '[' || each == '{'; });
    if (failure == simdjson::SUCCESS && brackets < 1000) // deeper ones are refused
        require(whole && whole->size() == fuzzedKeys.size() * elements.size());
    if (failure != simdjson::SUCCESS && failure != simdjson::NUMBER_ERROR)
        require(!whole);
    return 0;
}
