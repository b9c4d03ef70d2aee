#pragma once

#include <string>

namespace platform {

// The file that this process runs.
std::string executablePath();

// From now on this process, and those that it starts, speak this language, such as "de". Before the first text is
// looked up, while there is one thread.
void useLanguage(const std::string& language);

} // namespace platform
