#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace helper {

// Time Machine's local snapshots are known by the second of their making, as "2026-11-22-093000", and each is called
// after it: "com.apple.TimeMachine.2026-11-22-093000.local".

bool isSnapshotDate(std::string_view text);
std::string nameOfSnapshot(std::string_view date);

// Those in the output of "tmutil listlocalsnapshots" or "tmutil listlocalsnapshotdates", in its order, each once.
// Snapshots of other programs, the system's own among them, are none of Time Machine's.
std::vector<std::string> snapshotDatesInListing(std::string_view output);

// That of the snapshot that "tmutil localsnapshot" says it has made.
std::optional<std::string> dateOfMadeSnapshot(std::string_view output);

} // namespace helper
