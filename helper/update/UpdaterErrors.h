#pragma once

#include "helper/update/Download.h"
#include "platform/Error.h"

#include <cstdint>
#include <expected>

namespace helper {

// Errors of the updater's domain, logged as they are made.
std::unexpected<platform::Error> updaterError(std::int64_t code);
std::unexpected<platform::Error> updaterError(std::int64_t code, platform::Error reason);

// That of a download that serves the purpose of the code.
std::unexpected<platform::Error> downloadError(std::int64_t code, Download::Failure failure);

} // namespace helper
