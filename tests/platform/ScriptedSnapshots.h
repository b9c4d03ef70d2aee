#pragma once

#include "platform/Snapshots.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The snapshots of volumes. Main thread only.
namespace scripted::snapshots {

// What one call for records answers.
struct Answer {
    int count = 0; // -1 for a failure
    std::vector<std::byte> bytes;
};

struct Snapshots {
    std::vector<Answer> answers; // without more of them, there are no more records
    std::map<std::uint64_t, std::uint64_t> sizes;
    int refusal = 0; // the errno value with which it cannot be opened
};

void reset(); // no volume can be opened: ENOENT
void set(const std::string& url, Snapshots snapshots);
void setMissingAccess(platform::SnapshotAccess access); // full disk access after reset()

int timesOpened(); // successful or not, since reset()
std::vector<std::uint64_t> askedSizes();

} // namespace scripted::snapshots
