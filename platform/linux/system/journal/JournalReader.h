#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>

struct sd_journal;

namespace platform {

// The system's journal, from its beginning. One thread.
class JournalReader {
public:
    // The failure is an errno value.
    static std::expected<JournalReader, int> open();

    // Whether it has a file that this user may read.
    bool hasFiles() const;

    // Only entries with this field and value; of several for the same field, any.
    std::expected<void, int> addMatch(const std::string& field, const std::string& value);

    // Goes to the next entry; false at the end.
    std::expected<bool, int> next();
    // Of the entry at hand; nullopt when it has no such field. Valid UTF-8.
    std::optional<std::string> field(const char* name) const;
    std::uint64_t microseconds() const; // since 1970

private:
    struct Close {
        void operator()(sd_journal* journal) const;
    };
    explicit JournalReader(sd_journal* journal) : _journal(journal) { }
    std::unique_ptr<sd_journal, Close> _journal;
};

} // namespace platform
