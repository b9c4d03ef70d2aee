#pragma once

#include "platform/Error.h"

#include <optional>
#include <string>
#include <vector>

namespace helper {

// A field that a backup program needs; the kinds are those of BackupFieldKind.
struct ProgramField {
    std::string key;
    std::string kind;
    bool isRequired = false;
};

// A backup program, as a file of the installation describes it. In arguments and paths "{Key}" stands for the field of
// that key, "{Identifier}" for the backup's own and "{State}" for a folder of the program's; an argument that has a
// field of several values comes once for each.
struct ProgramDescription {
    std::string identifier; // the file's name
    std::string name;
    bool isRecommended = false; // to who has none yet
    std::string package;
    std::vector<std::string> executables; // absolute; the first that is there is run
    std::vector<std::string> arguments;
    std::vector<std::string> environment; // "NAME=value"
    std::vector<std::string> needs;       // files of which one has to be there; none: nothing is needed
    std::string preparedPath;             // unless it is there:
    std::vector<std::string> preparation; // arguments with which it is run before; none: nothing to prepare
    std::vector<int> warnings;            // exit statuses of a backup that was made, but for 0
    std::vector<ProgramField> fields;
    std::string place; // for people, as in BackupProgramKey
    std::string restore;

    const ProgramField* field(std::string_view key) const;
    bool isSuccess(std::optional<int> status) const;

    // nullopt for a dictionary that describes none.
    static std::optional<ProgramDescription> inDictionary(const std::string& identifier,
                                                          const platform::Dictionary& content);
};

} // namespace helper
