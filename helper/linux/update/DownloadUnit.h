#pragma once

#include "helper/update/Download.h"

#include <optional>
#include <string>

namespace helper {

// Where this program runs as a unit of the system it has no network, and another unit, which has the network and
// nothing else and lives for this work alone, fetches what is on the web; elsewhere this process does.
class DownloadUnit {
public:
    static bool isNeeded(const std::string& url);

    // Ends within the terms' time and a few seconds; soon after nobody waits.
    static Download::Outcome<void> perform(const std::string& url, const UpdateConfiguration& configuration,
                                           const Download::Terms& terms, const Download::Sink& sink);
};

// "--download URL SIZE SECONDS SILENCE" (bytes; seconds in all; seconds that a server may be silent): downloads, and
// tells it on the standard output as a pipe. The unit's credential "authorities", if there is one, is a file of
// certificates to trust. The exit status; nullopt when the arguments ask for something else.
std::optional<int> runDownloadCommand(int count, const char* const* arguments);

} // namespace helper
