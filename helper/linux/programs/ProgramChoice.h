#pragma once

#include "helper/linux/programs/ProgramCatalog.h"
#include "helper/linux/programs/ProgramStore.h"
#include "platform/BackupRunner.h"

#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// The backup program that is chosen, of those that can be. Any thread, but one change at a time.
class ProgramChoice {
public:
    ProgramChoice(const std::string& path, std::string catalogFolder);

    // The messages that ask for it and that change it. Both look anew what can be chosen.
    platform::Dictionary reply();
    platform::Result<void> choose(const platform::Dictionary& choice, bool isWithoutPassword);

    // Whether one is chosen and is there.
    bool isReady() const;
    std::string identifier() const;
    std::string name() const; // as a person reads it; empty when none is chosen
    bool preventsSleep() const;
    std::vector<std::string> folders() const; // that are backed up, as far as it has to be told

    // Otherwise a sentence that says what is missing.
    std::expected<platform::BackupJob, std::string> job(const std::string& identifier) const;
    // Whether a status is a success of the program of that identifier.
    bool isSuccess(const std::string& program, std::optional<int> status) const;

private:
    std::shared_ptr<const ProgramCatalog> readCatalog();
    std::shared_ptr<const ProgramCatalog> catalog() const;
    std::optional<ProgramDescription> chosen() const;

    const std::string _catalogFolder;
    ProgramStore _store;
    mutable std::mutex _lock; // of:
    std::shared_ptr<const ProgramCatalog> _catalog;
};

} // namespace helper
