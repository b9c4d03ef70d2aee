#include "platform/linux/system/journal/JournalReader.h"

#include "platform/linux/system/journal/JsonText.h"

#include <cstring>
#include <systemd/sd-journal.h>

namespace platform {

void JournalReader::Close::operator()(sd_journal* journal) const
{
    sd_journal_close(journal);
}

std::expected<JournalReader, int> JournalReader::open()
{
    sd_journal* journal = nullptr;
    const int result = sd_journal_open(&journal, SD_JOURNAL_LOCAL_ONLY);
    if (result < 0)
        return std::unexpected(-result);
    JournalReader reader(journal);
    sd_journal_set_data_threshold(journal, 0); // whole messages, however long
    sd_journal_seek_head(journal);
    return reader;
}

bool JournalReader::hasFiles() const
{
    return sd_journal_has_runtime_files(_journal.get()) > 0 || sd_journal_has_persistent_files(_journal.get()) > 0;
}

std::expected<void, int> JournalReader::addMatch(const std::string& field, const std::string& value)
{
    const auto match = field + "=" + value;
    const int result = sd_journal_add_match(_journal.get(), match.data(), match.size());
    return result < 0 ? std::unexpected(-result) : std::expected<void, int>();
}

std::expected<bool, int> JournalReader::next()
{
    const int result = sd_journal_next(_journal.get());
    return result < 0 ? std::unexpected(-result) : std::expected<bool, int>(result > 0);
}

std::optional<std::string> JournalReader::field(const char* name) const
{
    const void* data = nullptr;
    std::size_t length = 0;
    if (sd_journal_get_data(_journal.get(), name, &data, &length) < 0)
        return std::nullopt;
    const auto skipped = std::strlen(name) + 1; // "NAME="
    return validUTF8({static_cast<const char*>(data) + skipped, length - skipped});
}

std::uint64_t JournalReader::microseconds() const
{
    std::uint64_t time = 0;
    sd_journal_get_realtime_usec(_journal.get(), &time);
    return time;
}

} // namespace platform
