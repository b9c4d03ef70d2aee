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

// Reads a JSON array of objects that arrives in pieces.
class JSONRecords {
public:
    // The values of the keys, in the order of the keys, good during the call. Of a key that an object has twice, the
    // last value.
    using Visitor = std::function<void(std::span<const JSONField> fields)>;

    // The visitor is called for each element, in order, by one thread at a time: while the array arrives perhaps by
    // another than the caller's. Elements that are no objects have no values.
    JSONRecords(std::span<const std::string_view> keys, Visitor visit);
    ~JSONRecords();
    JSONRecords(const JSONRecords&) = delete;
    JSONRecords& operator=(const JSONRecords&) = delete;

    // The next piece. May wait until earlier ones are read. Text that can no longer become a JSON array is not kept.
    void append(std::string_view piece);
    // Whether nothing has come, or only space.
    bool isEmpty() const;

    // The end. All calls of the visitor are over when it returns. An error when the whole is not one valid JSON array;
    // the visitor may have seen elements before the damage. Once.
    Result<void> finish();

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace platform
