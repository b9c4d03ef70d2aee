#pragma once

#include "helper/linux/programs/ProgramDescription.h"

#include <string>
#include <string_view>
#include <vector>

namespace helper {

// The backup programs that can be chosen: the descriptions in a folder, which only the administrator can have put
// there.
class ProgramCatalog {
public:
    // The installation's own folder.
    static std::string installedFolder();

    // A file that does not describe a program, or that others may change, is told in the log and left out.
    explicit ProgramCatalog(const std::string& folder);

    // By their identifiers.
    const std::vector<ProgramDescription>& programs() const { return _programs; }
    const ProgramDescription* program(std::string_view identifier) const;

private:
    std::vector<ProgramDescription> _programs;
};

} // namespace helper
