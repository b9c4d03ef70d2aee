#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform {

// Reads a binary property list straight from its tables. What the input unfolds into is bounded by its size
// (PropertyListLimits), and with it the time and memory that this takes.
class BinaryReader {
public:
    // At most `maximumValues` are read, however large the input is.
    explicit BinaryReader(std::span<const std::uint8_t> bytes,
                          std::size_t maximumValues = std::numeric_limits<std::size_t>::max());

    // Nullopt for any damage among the objects that the root leads to, and when there are too many of them.
    std::optional<PropertyList> read();

private:
    // Where an object's content is: `count` elements from `content`. Scalars have no count but the lower half of their
    // first byte.
    struct Object {
        unsigned marker = 0;
        std::size_t count = 0;
        std::size_t content = 0;
    };

    // The keys of a dictionary, kept for the next one that is as deep: a long list is mostly one of equal dictionaries.
    // A dictionary's own ones are one level deeper, so that a shape stays as it is while its values are read.
    struct Shape {
        std::vector<std::uint64_t> references;
        DictionaryKeys keys;     // none when one of them comes twice
        std::size_t content = 0; // the bytes of the keys, as they are counted
    };
    static constexpr std::size_t largestShape = 32;

    std::uint64_t numberAt(std::size_t at, std::size_t size) const;
    bool readTrailer();
    bool findObject(std::uint64_t index, Object& object) const;
    bool readCount(Object& object) const;
    bool fits(const Object& object, std::size_t elementSize) const;
    bool holds(const Object& object, std::size_t size) const;
    std::uint64_t reference(const Object& object, std::size_t number) const;
    bool spendValues(std::size_t count);
    bool spendContent(std::size_t size);

    // These hand what they read to `place`, which makes a value of it where it belongs, and are false for damage.
    // `depth` counts the collections around the value.
    template <class Place>
    bool readValue(std::uint64_t index, int depth, const Place& place);
    template <class Place>
    bool readInteger(const Object& object, const Place& place) const;
    bool readReal(const Object& object, double& real) const;
    bool readData(const Object& object, Data& data);
    bool readText(const Object& object, std::string& text);
    bool readArray(const Object& object, int depth, Array& array);
    bool readDictionary(const Object& object, int depth, Dictionary& dictionary);
    bool readMembers(const Object& object, int depth, Dictionary& dictionary);
    bool hasShape(const Object& object, const Shape& shape) const;
    bool readShape(const Object& object, Shape& shape);
    bool readKey(const Object& object, std::size_t number, std::string& key);

    std::span<const std::uint8_t> _bytes;
    std::size_t _valuesLeft;
    std::size_t _contentLeft;
    std::size_t _offsetSize = 0;
    std::size_t _referenceSize = 0;
    std::uint64_t _objectCount = 0;
    std::uint64_t _root = 0;
    std::size_t _table = 0;    // content lies before it
    std::deque<Shape> _shapes; // by depth; one is referred to while others come
};

} // namespace platform
