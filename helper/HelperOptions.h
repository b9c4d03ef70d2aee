#pragma once

#include "helper/update/UpdateConfiguration.h"

#include <expected>
#include <string>
#include <vector>

namespace helper {

// What the program was told on its command line.
struct HelperOptions {
    std::string root;
    std::string rulesFolder; // of the authority; empty: no rule is written
    UpdateConfiguration updates;
    std::vector<std::string> arguments; // all of them, for another start

    // Of each system.
    static const char* const usage;
    // Where the authority of the installed edition reads rules; null when it reads none, and no option names one.
    static const char* const systemRules;

    // Fails with a sentence, or with nothing for arguments that are not understood.
    static std::expected<HelperOptions, std::string> inArguments(int count, const char* const* arguments);
};

} // namespace helper
