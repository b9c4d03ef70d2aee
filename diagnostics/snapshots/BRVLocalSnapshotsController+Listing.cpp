#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "diagnostics/snapshots/SnapshotDate.h"
#include "diagnostics/snapshots/SnapshotRecords.h"
#include "messaging/ZRKError.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/Snapshots.h"
#include "protocol/SnapshotList.h"

#include <cstring>

namespace {

platform::Error listingError(const std::string& url, int code)
{
    constexpr const char* key = "Failed to list snapshots for volume '%@': %s.";
    const auto fill = [&](const std::string& format) {
        return platform::formatString(format, {url, static_cast<const char*>(std::strerror(code))});
    };
    // A translation with wrong placeholders must not cost the user the message.
    const auto text = fill(platform::localizedString(key)).or_else([&] { return fill(key); });
    return ZRKError::errorWithDomain(platform::POSIXErrorDomain, code,
                                     {{platform::LocalizedDescriptionKey, text.value_or(key)}});
}

// Nothing for a record without a name or a date.
std::optional<platform::Dictionary> snapshotOfRecord(const SnapshotRecord& record, platform::SnapshotVolume& volume)
{
    const auto size = record.objectIdentifier ? volume.sizeOfSnapshot(*record.objectIdentifier) : std::nullopt;
    if (!record.name || !record.creationTime)
        return std::nullopt;
    platform::Dictionary snapshot{
        {SnapshotListKey::Name, *record.name},
        {SnapshotListKey::Date, dateOfSnapshotTime(static_cast<double>(*record.creationTime))}};
    if (size)
        snapshot.set(SnapshotListKey::Size, *size);
    return snapshot;
}

} // namespace

std::optional<BRVLocalSnapshotsController::SnapshotList>
BRVLocalSnapshotsController::snapshotsAtURL(const std::string& url, std::optional<platform::Error>* error) const
{
    const auto volume = platform::SnapshotVolume::open(url);
    if (!volume) {
        if (error)
            *error = listingError(url, volume.error());
        return std::nullopt;
    }
    SnapshotList snapshots;
    std::vector<std::byte> buffer((*volume)->bufferSize());
    // A failure on the way is not reported: what was read until then is the list.
    for (int count; (count = (*volume)->nextRecords(buffer)) > 0;) {
        for (const auto& record : snapshotRecords(buffer, count)) {
            if (auto snapshot = snapshotOfRecord(record, **volume))
                snapshots.push_back(std::move(*snapshot));
        }
    }
    return snapshots;
}
