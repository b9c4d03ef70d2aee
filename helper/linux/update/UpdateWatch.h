#pragma once

#include "platform/Error.h"
#include "platform/FileDescriptor.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace helper {

// The old version's eye on the new one: a process of the old program that begins before the exchange and outlives it.
// When the new version, which goes on as the watched process, has answered a request, it removes the old one. When the
// watched process ends before that, does not come to it in time, or the service is told to stop, it puts the old
// version back and, unless a service manager does so, starts it.
class UpdateWatch {
public:
    // Begins to watch this process; the arguments are those of the helper. The watch has the staging folder from now
    // on. While the object is there, and until this process runs another program, the old version is still at work.
    static platform::Result<UpdateWatch> start(const std::string& program, const std::vector<std::string>& arguments);

private:
    explicit UpdateWatch(platform::FileDescriptor work) : _work(std::move(work)) { }

    platform::FileDescriptor _work;
};

// "--watch-update" and the helper's arguments: the watch. "--take-back" and the helper's arguments: puts the old
// version back if a newer one is on trial that nobody watches, for whoever starts the service anew. The exit status;
// nullopt when the arguments ask for something else.
std::optional<int> runUpdateWatchCommand(int count, char** arguments);

} // namespace helper
