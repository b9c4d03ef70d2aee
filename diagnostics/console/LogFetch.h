#pragma once

#include "platform/Process.h"

#include <memory>
#include <mutex>
#include <string>

// One reading of the log: what the thread that reads it and those who wait for it tell each other.
class LogFetch {
public:
    // Ends it as soon as it can; its text is of no use then. Any thread.
    void stop();
    bool isStopped() const;

    // The tool that stop() ends. The reading thread.
    void setTool(std::shared_ptr<platform::Process> tool);

    // Why there is no text, in the user's language. Empty where nothing failed. The reading thread, then those who got
    // its text.
    std::string failure;

private:
    mutable std::mutex _mutex;
    std::shared_ptr<platform::Process> _tool;
    bool _isStopped = false;
};
