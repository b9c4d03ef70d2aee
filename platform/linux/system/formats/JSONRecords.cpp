#include "platform/JSONRecords.h"

#include "platform/linux/system/formats/JSONArrayScanner.h"
#include "platform/linux/system/formats/JSONRecordParser.h"
#include "platform/Localization.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr std::int64_t propertyListReadCorrupt = 3840;

Error corruptJSONError(std::string_view detail)
{
    const auto sentence = localizedString("The data is not valid JSON.") + " (" + std::string(detail) + ")";
    return {CocoaErrorDomain, propertyListReadCorrupt, {{LocalizedDescriptionKey, sentence}}, nullptr};
}

// Memory that grows in place where the system can: a hundred megabytes are not to be copied over and over.
class GrowingBuffer {
public:
    bool append(std::string_view piece)
    {
        const auto needed = _size + piece.size() + JSONRecordParser::Padding;
        if (needed > _capacity && !grow(std::max(needed, 2 * _capacity)))
            return false;
        std::memcpy(_bytes.get() + _size, piece.data(), piece.size());
        _size += piece.size();
        return true;
    }
    void clear()
    {
        _bytes.reset();
        _size = _capacity = 0;
    }

    // Gives the memory before the offset back to the system; what was there is lost.
    void forgetBefore(std::size_t offset)
    {
        const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
        const auto start = reinterpret_cast<std::uintptr_t>(_bytes.get());
        const auto first = (start + page - 1) / page * page;
        const auto end = (start + offset) / page * page;
        if (first < end)
            ::madvise(reinterpret_cast<void*>(first), end - first, MADV_DONTNEED);
    }

    char& operator[](std::size_t offset) { return _bytes.get()[offset]; }
    std::size_t size() const { return _size; }
    std::string_view text() const { return {_bytes.get(), _size}; }

private:
    bool grow(std::size_t capacity)
    {
        auto* const bytes = static_cast<char*>(std::realloc(_bytes.get(), capacity));
        if (!bytes)
            return false;
        static_cast<void>(_bytes.release());
        _bytes.reset(bytes);
        _capacity = capacity;
        return true;
    }

    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<char, Free> _bytes;
    std::size_t _size = 0;
    std::size_t _capacity = 0;
};

} // namespace

struct JSONRecords::Native {
    GrowingBuffer buffer;
    JSONArrayScanner scanner;
    bool refused = false; // what has arrived cannot be an array, or there is no room for it
};

JSONRecords::JSONRecords() : _native(std::make_unique<Native>()) { }

JSONRecords::~JSONRecords() = default;

void JSONRecords::append(std::string_view piece)
{
    auto& [buffer, scanner, refused] = *_native;
    if (refused || piece.empty())
        return;
    refused = !buffer.append(piece);
    if (!refused) {
        scanner.scan(buffer.text());
        refused = scanner.isBroken();
    }
    if (refused)
        buffer.clear();
}

std::size_t JSONRecords::size() const
{
    return _native->buffer.size();
}

Result<void> JSONRecords::read(std::span<const std::string_view> keys, const Visitor& visit)
{
    auto& [buffer, scanner, refused] = *_native;
    if (!scanner.isComplete() || refused) {
        const char* const reason = refused ? "It is not an array." : size() == 0 ? "It is empty." : "It ends too soon.";
        return std::unexpected(corruptJSONError(localizedString(reason)));
    }
    JSONRecordParser parser;
    const auto& cuts = scanner.cuts();
    for (std::size_t part = 0; part + 1 < cuts.size(); ++part) {
        // Each part becomes an array of its own where it stands.
        const auto begin = cuts[part];
        const auto end = cuts[part + 1];
        buffer[begin] = '[';
        const char last = std::exchange(buffer[end], ']');
        const auto count =
            last == '}' ? std::nullopt : parser.parse(buffer.text().substr(begin, end + 1 - begin), keys, visit);
        if (!count)
            return std::unexpected(corruptJSONError(parser.failure()));
        if (*count == 0 && cuts.size() > 2)
            return std::unexpected(corruptJSONError(localizedString("An element is missing.")));
        buffer.forgetBefore(end);
    }
    return {};
}

} // namespace platform
