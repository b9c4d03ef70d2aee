#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace platform {

// The definitions of the product's rights: one property-list file for all of them, replaced whole, readable by
// everyone.
class RightsStore {
public:
    static RightsStore& shared();

    // The file. Others may be in it than the product's rights, but each is a dictionary.
    static std::string path();

    std::optional<Dictionary> definition(const std::string& right) const;
    // False when the file can't be written; needs the privilege to do so.
    bool setDefinition(const std::string& right, const Dictionary& definition);

private:
    RightsStore() = default;
};

} // namespace platform
