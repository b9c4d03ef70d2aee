#pragma once

#include "helper/linux/programs/ProgramCatalog.h"
#include "helper/PropertyListFile.h"

#include <mutex>
#include <string>

namespace helper {

// The chosen backup program, on disk.
class ProgramStore {
public:
    // Reads the file. No other store may be at work on it.
    explicit ProgramStore(const std::string& path);

    // {Program, Fields, PreventSleep}; empty: none is chosen. Any thread; never waits for the disk.
    platform::Dictionary choice() const;

    // Stores a checked choice; it is on disk when this returns success. One call at a time.
    platform::Result<void> setChoice(const platform::Dictionary& choice);

    // The reply to the question what is chosen and what can be.
    platform::Dictionary reply(const ProgramCatalog& catalog) const;

private:
    PropertyListFile _file;
    mutable std::mutex _lock;
    platform::Dictionary _choice;
};

} // namespace helper
