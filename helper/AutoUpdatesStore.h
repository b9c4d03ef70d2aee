#pragma once

#include "helper/PropertyListFile.h"

#include <atomic>
#include <string>

namespace helper {

// Whether updates are installed by themselves. Off until somebody turns it on.
class AutoUpdatesStore {
public:
    // Reads the file. No other store may be at work on it.
    explicit AutoUpdatesStore(const std::string& path);

    // Any thread; never waits for the disk.
    bool enabled() const { return _enabled; }

    // On disk when this returns success. One call at a time.
    platform::Result<void> setEnabled(bool enabled);

private:
    PropertyListFile _file;
    std::atomic<bool> _enabled = false;
};

} // namespace helper
