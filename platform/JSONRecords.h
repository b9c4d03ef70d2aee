#pragma once

#include "platform/Error.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace platform {

// The value that an object has under a key.
struct JSONField {
    enum class Kind { Absent, String, Other };
    Kind kind = Kind::Absent;
    // A string itself, or the digits of a number that is beyond 64 bits; of other values what "%@" prints of them,
    // "<null>" for null. UTF-8.
    std::string_view text;

    bool isString(std::string_view string) const { return kind == Kind::String && text == string; }
};

// A JSON array of objects that arrives in pieces and is read when it is there as a whole.
class JSONRecords {
public:
    JSONRecords();
    ~JSONRecords();
    JSONRecords(const JSONRecords&) = delete;
    JSONRecords& operator=(const JSONRecords&) = delete;

    // The next piece. Text that can no longer become a JSON array is not kept.
    void append(std::string_view piece);
    // Bytes kept.
    std::size_t size() const;

    // The values of the keys, in the order of the keys, good during the call. Of a key that an object has twice, the
    // last value.
    using Visitor = std::function<void(std::span<const JSONField> fields)>;

    // Reads the array: calls the visitor for each element, in order; elements that are no objects have no values. An
    // error when the whole is not one valid JSON array; the visitor may have seen elements before the damage. Once.
    Result<void> read(std::span<const std::string_view> keys, const Visitor& visit);

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace platform
