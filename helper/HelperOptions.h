#pragma once

#include "helper/update/UpdateConfiguration.h"

#include <expected>
#include <string>
#include <vector>

namespace helper {

// What the program was told on its command line.
struct HelperOptions {
    std::string root;
    std::string rulesFolder; // of polkit; empty: none is written
    UpdateConfiguration updates;
    std::vector<std::string> arguments; // all of them, for another start

    static const char* const usage;

    // Fails with a sentence, or with nothing for arguments that are not understood.
    static std::expected<HelperOptions, std::string> inArguments(int count, const char* const* arguments);
};

} // namespace helper
