#pragma once

#include <string>

// The bytes of a file; none when it cannot be read.
std::string contentOfFile(const std::string& path);
