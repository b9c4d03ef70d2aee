#pragma once

#include "platform/JSONRecords.h"

#include <memory>
#include <optional>

namespace platform {

// Parses and checks texts of moderate length that are whole JSON arrays. Its memory is used again for the next one.
class JSONRecordParser {
public:
    // Bytes after the text that have to be readable.
    static const std::size_t Padding;

    JSONRecordParser();
    ~JSONRecordParser();
    JSONRecordParser(const JSONRecordParser&) = delete;
    JSONRecordParser& operator=(const JSONRecordParser&) = delete;

    // How many elements it has; nullopt when it is not one valid array. See JSONRecords.
    std::optional<std::size_t> parse(std::string_view array, std::span<const std::string_view> keys,
                                     const JSONRecords::Visitor& visit);
    // What was wrong, in the parser's words.
    const char* failure() const { return _failure; }

private:
    struct Native;
    std::unique_ptr<Native> _native;
    const char* _failure = "";
};

} // namespace platform
