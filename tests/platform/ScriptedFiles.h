#pragma once

#include "platform/FileWriting.h"

#include <optional>
#include <string>
#include <vector>

// Files that the user has the application write. Any thread.
namespace scripted::files {

struct File {
    std::string path;
    std::string bytes;
    std::vector<std::string> tagNames;
};

void reset();
// Of writing from now on.
void setFailure(std::optional<platform::Error> error);
std::vector<File> written();

} // namespace scripted::files
