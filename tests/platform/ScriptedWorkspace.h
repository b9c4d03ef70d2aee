#pragma once

#include "platform/Workspace.h"

#include <string>
#include <vector>

// The user's desktop. One thread at a time.
namespace scripted::workspace {

void reset(); // everything opens
void setOpens(bool opens);

// What was to be opened since reset(), in order.
std::vector<std::string> openedURLs();
std::vector<std::string> openedFiles();

} // namespace scripted::workspace
