#include "diagnostics/snapshots/SnapshotRecords.h"
#include "platform/Unicode.h"
#include "tests/fuzz/Require.h"

#include <cstddef>
#include <cstdint>

// The first byte is the count of records, the rest the buffer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto* const begin = reinterpret_cast<const char*>(bytes + 1);
    const auto records = snapshotRecords({reinterpret_cast<const std::byte*>(begin), size - 1}, bytes[0]);
    require(records.size() <= bytes[0]);
    require(records.size() * 24 <= size - 1);
    for (const auto& record : records) {
        if (!record.name)
            continue;
        require(record.name->data() >= begin && record.name->data() + record.name->size() < begin + size - 1);
        require(platform::isValidUTF8(*record.name) && record.name->find('\0') == std::string_view::npos);
    }
    return 0;
}
