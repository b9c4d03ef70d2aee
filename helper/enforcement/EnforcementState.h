#pragma once

#include "helper/enforcement/Journal.h"
#include "helper/PropertyListFile.h"
#include "platform/PropertyList.h"
#include "protocol/ScheduleSettings.h"
#include "scheduling/Memory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// Everything about the enforcement of the schedule that outlives the helper.
struct EnforcementState {
    scheduling::Memory memory;
    ScheduleSettings record; // the one in force, which the memory belongs to
    std::string zone;        // in force
    Journal journal;

    // Of the last backup that was started.
    std::string identifier;              // as its runner knows it; empty: none was
    std::string program;                 // its program's identifier
    std::vector<std::int64_t> durations; // of the last successful ones, in seconds; oldest first

    bool operator==(const EnforcementState&) const = default;

    // The instant is that of writing it.
    platform::Dictionary dictionary(scheduling::Instant written) const;
    // nullopt when a value is missing, of another type or out of range.
    static std::optional<EnforcementState> inDictionary(const platform::Dictionary& dictionary);
};

// The state on disk.
class StateFile {
public:
    // Makes the folder when there is none. A damaged file is kept under another name and told in the log.
    explicit StateFile(const std::string& path);

    // What was there; nullopt when nothing usable was.
    const std::optional<EnforcementState>& found() const { return _found; }
    // When that was written.
    scheduling::Instant foundWritten() const { return _foundWritten; }

    // Writes it when it is another one than was written last. A failure is told in the log, once in a row.
    void save(const EnforcementState& state, scheduling::Instant now);

private:
    PropertyListFile _file;
    std::optional<EnforcementState> _found;
    scheduling::Instant _foundWritten = 0;
    std::optional<EnforcementState> _saved; // nothing when that is not known
    bool _isFailing = false;
};

} // namespace helper
