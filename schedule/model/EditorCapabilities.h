#pragma once

#include <functional>

// What the machine and its system let the schedule's editor offer.
struct EditorCapabilities {
    bool battery = false;               // the machine can run on battery power
    bool snapshots = false;             // macOS 10.13
    bool passiveCondition = false;      // macOS 10.10
    bool wiredNetworkCondition = false; // macOS 10.14
    bool batterySetting = false;        // macOS 10.15: the system has one of its own for backups on battery power

    // `runningAtLeast` answers for the minor release of macOS 10 less ten: 0 is 10.10, 5 is 10.15.
    static EditorCapabilities of(bool battery, const std::function<bool(unsigned)>& runningAtLeast);

    bool operator==(const EditorCapabilities&) const = default;
};
