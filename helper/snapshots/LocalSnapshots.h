#pragma once

#include "platform/Error.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// The local snapshots of this system's volumes. Each call may take seconds.
class LocalSnapshots {
public:
    struct Made {
        std::string path;                      // which remove() takes
        std::optional<std::string> identifier; // what tells it from all others that there have been
    };

    virtual ~LocalSnapshots() = default;

    // The volumes that can have snapshots and hold the folders; each once.
    virtual std::vector<std::string> volumesOf(const std::vector<std::string>& folders) const = 0;

    // A read-only snapshot of the volume, of which the product's other programs are told. Fails with the reason as a
    // clause.
    virtual std::expected<Made, std::string> make(const std::string& volume) = 0;
    // That of what is at the path now; nullopt when it is no snapshot.
    virtual std::optional<std::string> identifierOf(const std::string& path) const = 0;
    // The same. Nobody is told.
    virtual std::expected<void, std::string> remove(const std::string& path) = 0;

    // The reply to BRVMessageListSnapshots. Fails with an errno value's error; ENOENT for what is no mounted volume
    // with snapshots.
    virtual platform::Result<platform::PropertyList> list(const std::string& volume) const = 0;
};

// Tells the product's other programs that the snapshots of some volume are others now. False when nobody could be told.
bool tellOfSnapshots();

} // namespace helper
