#pragma once

#include "platform/FileWriting.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// Files that the user has the application write. Any thread.
namespace scripted::files {

struct File {
    std::string path;
    std::string bytes;
    std::vector<std::string> tagNames;
    bool isGuarded = false; // the system could not end the process meanwhile without asking it
};

void reset();
// Of writing from now on.
void setFailure(std::optional<platform::Error> error);
// Each writing takes so long from now on.
void setDuration(std::chrono::milliseconds duration);
std::vector<File> written();

} // namespace scripted::files
