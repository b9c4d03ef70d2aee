#pragma once

#include <string>

namespace platform {

// Hands a URL or a file to the program that the user's desktop has for it. False when it could not be handed over.
bool openURL(const std::string& url);
bool openFile(const std::string& path);

} // namespace platform
