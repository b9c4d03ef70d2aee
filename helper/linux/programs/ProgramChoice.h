#pragma once

#include "helper/enforcement/BackupPrograms.h"
#include "helper/linux/programs/ProgramCatalog.h"
#include "helper/linux/programs/ProgramStore.h"

#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// The backup program that is chosen, of those that are described in a folder.
class ProgramChoice final : public BackupPrograms {
public:
    ProgramChoice(const std::string& path, std::string catalogFolder);

    platform::Dictionary reply() override;
    platform::Result<void> choose(const platform::Dictionary& choice, bool isWithoutPassword) override;
    bool isReady() const override;
    std::string identifier() const override;
    std::string name() const override;
    bool preventsSleep() const override;
    std::vector<std::string> folders() const override;
    std::expected<platform::BackupJob, std::string> job(const std::string& identifier) const override;
    bool isSuccess(const std::string& program, std::optional<int> status) const override;

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
