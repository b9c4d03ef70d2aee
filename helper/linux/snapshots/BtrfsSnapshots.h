#pragma once

#include "helper/snapshots/LocalSnapshots.h"

namespace helper {

// Read-only snapshots of btrfs volumes.
class BtrfsSnapshots final : public LocalSnapshots {
public:
    std::vector<std::string> volumesOf(const std::vector<std::string>& folders) const override;
    std::expected<Made, std::string> make(const std::string& volume) override;
    std::optional<std::string> identifierOf(const std::string& path) const override;
    std::expected<void, std::string> remove(const std::string& path) override;
    platform::Result<platform::PropertyList> list(const std::string& volume) const override;
};

} // namespace helper
