#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <optional>
#include <string>
#include <vector>

namespace helper {

// A local snapshot that the helper has made by itself.
struct MadeSnapshot {
    std::string volume;
    std::string path;
    std::string identifier; // of the file system, so that no other one is taken for it
    scheduling::Instant at = 0;
    bool operator==(const MadeSnapshot&) const = default;

    platform::Dictionary dictionary() const;
    static std::optional<MadeSnapshot> inDictionary(const platform::Dictionary& dictionary);
};

// What is to be done about local snapshots.
struct SnapshotPlan {
    std::vector<std::string> make;           // of these volumes, now
    std::vector<MadeSnapshot> remove;        // now
    std::optional<scheduling::Instant> next; // look again

    // One of each volume every hour, the first at once; those of more than a day are removed, each volume's newest one
    // excepted. None lies in the future. `tried` are the last attempts, whether they came to a snapshot or not.
    struct Attempt {
        std::string volume;
        scheduling::Instant at = 0;
    };
    static SnapshotPlan at(scheduling::Instant now, const std::vector<std::string>& volumes,
                           const std::vector<MadeSnapshot>& made, const std::vector<Attempt>& tried);
};

} // namespace helper
