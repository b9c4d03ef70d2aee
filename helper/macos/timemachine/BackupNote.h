#pragma once

#include "helper/macos/timemachine/BackupOutcome.h"

#include <optional>
#include <string>

namespace helper {

// What is remembered of the backup that was started last.
struct BackupNote {
    std::string identifier;
    BackupTrace trace;
    bool hasEnded = false;
    BackupOutcome outcome; // then

    bool operator==(const BackupNote&) const = default;

    platform::Dictionary dictionary() const;
    static std::optional<BackupNote> inDictionary(const platform::Dictionary& dictionary);
};

} // namespace helper
