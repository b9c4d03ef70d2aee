#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Calls the function for every saved input of a fuzzer: each file of the folder, and each file in an archive there
// (*.tar.xz). Ends the program with a word on it when one cannot be read.
void forEachSavedInput(
    const std::string& folder,
    const std::function<void(const std::string& name, const std::vector<std::uint8_t>& bytes)>& function);
