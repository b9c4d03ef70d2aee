#pragma once

#include "platform/Error.h"

#include <functional>
#include <optional>
#include <string>

namespace helper {

// A dictionary in a file of its own, as a binary property list. One writer at a time.
class PropertyListFile {
public:
    using Acceptable = std::function<bool(const platform::Dictionary&)>;

    PropertyListFile(std::string path, Acceptable acceptable);

    // Removes what an interrupted write left behind, then reads. A file that is damaged or not acceptable is logged
    // and kept beside as ".damaged". nullopt when there is no usable file.
    std::optional<platform::Dictionary> open();

    // The content as it is on disk now; nullopt when there is no usable file.
    std::optional<platform::Dictionary> read() const;

    // On disk, whole, when it returns success. Otherwise an error of the system's domain with a plain description.
    platform::Result<void> write(const platform::Dictionary& content);

private:
    void keepDamagedFile() const;

    std::string _path;
    Acceptable _acceptable;
};

} // namespace helper
