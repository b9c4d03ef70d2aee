#pragma once

#include <map>
#include <optional>
#include <string>

// The prompt of each action of a polkit policy file.
class PolicyFile {
public:
    using Prompts = std::map<std::string, std::string>;

    // nullopt when the file cannot be read or is damaged.
    static std::optional<Prompts> promptsInFile(const std::string& path);
};
