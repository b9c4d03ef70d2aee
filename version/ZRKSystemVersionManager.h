#pragma once

#include "platform/SystemInformation.h"

// Tells features apart by the release of the running system. Any thread.
class ZRKSystemVersionManager {
public:
    static ZRKSystemVersionManager& sharedManager();

    // Whether the system is at least macOS 10.(10 + release), for 0 to 5; a larger number asks for 10.0.
    bool runningAtLeast(unsigned release) const;
    bool runningAtLeastVersion(platform::OperatingSystemVersion version) const;

private:
    ZRKSystemVersionManager() = default;
};
