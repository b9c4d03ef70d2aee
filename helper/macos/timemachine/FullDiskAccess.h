#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace helper {

// Whether macOS lets this program read what only programs with Full Disk Access may, as Time Machine's settings are
// from macOS 10.14 on.
enum class FullDiskAccess {
    Granted,
    Missing,
    Unknown, // there is nothing to tell it by
};

// Told by files that only such programs may read. 0 or the errno value of opening one comes from `open`.
FullDiskAccess fullDiskAccess(const std::vector<std::string>& files,
                              const std::function<int(const std::string&)>& open);
// Told by the system's own files.
FullDiskAccess fullDiskAccess();

// Whether a tool of the system says that it needs it.
bool asksForFullDiskAccess(std::string_view output);

// In words, without a full stop at the end.
inline constexpr const char* FullDiskAccessMissing = "the background scheduler has no Full Disk Access, which is given "
                                                     "in the system's settings under Privacy & Security";

// The note about it in the status.
inline constexpr const char* FullDiskAccessNotice = "The background scheduler has no Full Disk Access, so it cannot "
                                                    "read what Time Machine remembers of its backups, and may "
                                                    "be unable to remove local snapshots.";

} // namespace helper
