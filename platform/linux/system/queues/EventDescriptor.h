#pragma once

#include "platform/FileDescriptor.h"

namespace platform {

// Wakes a thread that polls. Signals add up to one; signal() is safe in a signal handler.
class EventDescriptor {
public:
    EventDescriptor();

    explicit operator bool() const { return static_cast<bool>(_descriptor); }
    int get() const { return _descriptor.get(); } // readable while signalled
    void signal() const;
    void reset() const;

private:
    FileDescriptor _descriptor;
};

} // namespace platform
