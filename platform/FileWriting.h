#pragma once

#include "platform/Error.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Writes a file of the user's whole or not at all: on failure the earlier one is untouched. A symbolic link
// stays one, and what it leads to is written. The error's underlying error is the POSIX one.
Result<void> writeFileAtomically(const std::string& path, std::string_view bytes);

// The names by which the user finds the file again. False where the file system keeps none.
bool setTagNames(const std::string& path, const std::vector<std::string>& names);

} // namespace platform
