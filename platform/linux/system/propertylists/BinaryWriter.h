#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace platform {

// Collects the objects of a binary property list and lays them out, in time linear in their size. Objects refer to each
// other by the number that adding one returns.
class BinaryWriter {
public:
    using Object = std::uint32_t;

    Object addBoolean(bool value);
    Object addInteger(std::int64_t value);   // equal ones are kept once
    Object addUnsigned(std::uint64_t value); // from 2^63 on
    Object addReal(double value);
    Object addDate(Date value);
    Object addData(std::span<const std::uint8_t> value);
    Object addString(std::string_view value); // valid UTF-8; equal short ones are kept once
    Object addUID(UID value);
    Object addArray(std::span<const Object> elements);
    Object addDictionary(std::span<const Object> keys, std::span<const Object> values);

    // The whole value. Nullopt when it holds text that isn't UTF-8 or has a NUL, or collections nested more than 512
    // deep.
    std::optional<Object> addValue(const PropertyList& value);

    Data finish(Object root) const;

private:
    // Encoded but for the numbers of other objects, whose width depends on how many there are.
    struct Entry {
        std::uint64_t encodedEnd;
        std::uint64_t referencesEnd;
    };

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    std::optional<Object> addArray(const Array& array, int depth);
    std::optional<Object> addDictionary(const Dictionary& dictionary, int depth);
    std::optional<Object> addText(std::string_view text);
    std::optional<Object> addValue(const PropertyList& value, int depth);
    void encodeInteger(std::int64_t value);
    void encodeMarker(unsigned marker, std::size_t count);
    void encodeUTF16(std::string_view text);
    Object endObject();

    Data _encoded;
    std::vector<Object> _references;
    std::vector<Entry> _entries;
    std::unordered_map<std::string, Object, Hash, std::equal_to<>> _strings;
    std::unordered_map<std::int64_t, Object> _integers;
};

} // namespace platform
