#pragma once

#include "helper/PropertyListFile.h"
#include "platform/ServiceConnection.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace helper {

// The stored schedule.
class SettingsStore {
public:
    // Reads the file. No other store may be at work on it.
    explicit SettingsStore(const std::string& path);

    // Any thread; never waits for the disk.
    std::shared_ptr<const platform::Dictionary> settings() const;

    // Whether a record was ever stored. Any thread.
    bool wasApplied() const { return _wasApplied; }

    // The reply to the message that asks for them, encoded once for all who ask. The same.
    platform::ServiceDictionary reply() const;

    // Stores a validated record; it is on disk when this returns success. One call at a time.
    platform::Result<void> setSettings(const platform::Dictionary& settings);

private:
    void keep(platform::Dictionary settings);

    PropertyListFile _file;
    std::atomic<bool> _wasApplied = false;
    mutable std::mutex _lock;
    std::shared_ptr<const platform::Dictionary> _settings;
    platform::ServiceDictionary _reply;
};

} // namespace helper
