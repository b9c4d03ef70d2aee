#pragma once

#include "helper/AuthorityRules.h"

#include <memory>
#include <string>
#include <utility>

namespace helper {

// Whether administrators must give their password to change settings: the rule of the right "…settings.modify-1", and
// beside it, where the authority reads rules of its own, one that says the same.
class PasswordRule {
public:
    // Null when the authority goes by the stored rule alone.
    explicit PasswordRule(std::shared_ptr<AuthorityRules> rules) : _rules(std::move(rules)) { }

    // The new rule is on disk when this returns success. One call at a time.
    platform::Result<void> setAllowsWithoutPassword(bool allowed) const;

    // By the stored rule.
    static bool allowsWithoutPassword();

    // Brings the stored rule and the rules file, of which a crash or an administrator may have changed one, to the
    // stricter of the two.
    platform::Result<void> takeStricter() const;

    // Removes the rules file. An errno value's error when it is there and stays.
    platform::Result<void> removeRules() const;
    // Empty when there is none, ever.
    std::string rulesFile() const { return _rules ? _rules->path() : std::string(); }

private:
    std::shared_ptr<AuthorityRules> _rules;
};

} // namespace helper
