#include "helper/macos/timemachine/TimeMachineSnapshots.h"

#include "helper/macos/timemachine/SnapshotNames.h"

#include <algorithm>
#include <cerrno>

namespace helper {

std::expected<LocalSnapshots::Made, std::string> TimeMachineSnapshots::make(const std::string&)
{
    const auto date = _tool.makeSnapshot();
    if (!date)
        return std::unexpected(date.error());
    tellOfSnapshots();
    return Made{.path = *date, .identifier = nameOfSnapshot(*date)};
}

std::optional<std::string> TimeMachineSnapshots::identifierOf(const std::string& path) const
{
    // The date says all; where they cannot be listed, the removal will show whether it is there.
    const auto dates = _tool.snapshotDates();
    const bool mayBeThere = isSnapshotDate(path) && (!dates || std::ranges::find(*dates, path) != dates->end());
    return mayBeThere ? std::optional(nameOfSnapshot(path)) : std::nullopt;
}

std::expected<void, std::string> TimeMachineSnapshots::remove(const std::string& path)
{
    return _tool.removeSnapshot(path);
}

platform::Result<platform::PropertyList> TimeMachineSnapshots::list(const std::string&) const
{
    return std::unexpected(platform::Error{platform::POSIXErrorDomain, ENOTSUP, {}, nullptr});
}

} // namespace helper
