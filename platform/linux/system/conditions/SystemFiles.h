#pragma once

#include <string>
#include <vector>

namespace platform {

// The first line of a small file without its end; empty when it cannot be read.
std::string firstLine(const std::string& path);

// The names in a folder but "." and "..", sorted; none when it cannot be read.
std::vector<std::string> namesInFolder(const std::string& path);

// A file or folder of the machine. A sandbox that has one of its own at this place below its root has that.
std::string machinePath(const std::string& path);

} // namespace platform
