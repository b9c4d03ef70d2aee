#pragma once

#include <cstdint>
#include <optional>

namespace scheduling {

// How the computer stands just now.
struct Conditions {
    bool battery = false;         // on battery power
    bool hasBattery = true;       // can be on battery power at all
    bool passive = false;         // runs with nobody logged in at it, or with its lid closed and no display
    bool sleepPreventers = false; // some program other than ours prevents sleep
    bool wired = true;            // the way out is a wired network
    bool otherBackup = false;     // a backup runs that the helper did not start
    bool maintenance = false;     // an update or the uninstallation is at work
    bool noProgram = false;       // no backup program is chosen, or it is not there
    // True time (Now::elapsed) since which nobody has used the computer; nullopt while somebody uses it.
    std::optional<std::int64_t> unusedSince{};

    bool operator==(const Conditions&) const = default;
};

} // namespace scheduling
