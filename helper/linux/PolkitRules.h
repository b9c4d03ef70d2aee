#pragma once

#include "helper/AuthorityRules.h"

#include <utility>

namespace helper {

// A file in polkit's folder of rules.
class PolkitRules final : public AuthorityRules {
public:
    explicit PolkitRules(std::string folder) : _folder(std::move(folder)) { }

    std::string path() const override;
    bool isWritten() const override;
    platform::Result<void> write() const override;
    platform::Result<void> remove() const override;

private:
    std::string _folder;
};

} // namespace helper
