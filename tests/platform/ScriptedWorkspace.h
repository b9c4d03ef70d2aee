#pragma once

#include "platform/Workspace.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The user's desktop. One thread at a time.
namespace scripted::workspace {

void reset(); // everything opens, and every program can be launched
void setOpens(bool opens);
// From now on launching fails so; nothing: it succeeds.
void failLaunchWith(std::optional<platform::Error> error);

// The programs that were launched or were to be since reset(), in order, and what was sent to them.
struct Launch {
    std::string path;
    std::vector<int> signals;
};
std::vector<Launch> launches();
// Runs at each signal, before sendSignal returns.
void setSignalHandler(std::function<void(int)> handler);

// What was to be opened since reset(), in order.
std::vector<std::string> openedURLs();
std::vector<std::string> openedFiles();

} // namespace scripted::workspace
