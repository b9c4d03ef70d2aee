#pragma once

#include "platform/Error.h"

#include <string>

namespace helper {

// Whether administrators must give their password to change settings: the rule of the right "…settings.modify-1", and
// beside it, where a real authority reads rules, a rules file that says the same.
class PasswordRule {
public:
    // The folder of the authority's rules; empty when there is none.
    explicit PasswordRule(std::string rulesFolder) : _rulesFolder(std::move(rulesFolder)) { }

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
    std::string rulesFile() const { return _rulesFolder.empty() ? std::string() : rulesPath(); }

private:
    std::string rulesPath() const;
    platform::Result<void> writeRules() const;

    std::string _rulesFolder;
};

} // namespace helper
