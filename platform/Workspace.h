#pragma once

#include "platform/Error.h"

#include <memory>
#include <string>

namespace platform {

// Hands a URL or a file to the program that the user's desktop has for it. False when it could not be handed over. A
// settings pane of the system may take seconds; any thread.
bool openURL(const std::string& url);
bool openFile(const std::string& path);

// A program that was launched. It goes on when this object is gone.
class LaunchedProgram {
public:
    virtual ~LaunchedProgram() = default;
    // False when it has ended already.
    virtual bool sendSignal(int number) = 0;
};

// Launches the program at the path, with no arguments, and does not wait for it.
Result<std::shared_ptr<LaunchedProgram>> launchProgram(const std::string& path);

} // namespace platform
