#pragma once

#include "platform/Process.h"

#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// Whether this process is the main one of a unit of systemd's, which may confine it.
bool isServiceUnit();

// Runs this program once more, in a transient unit of the system that lives for it alone and is confined by its own
// properties ("NAME=VALUE"), not by those of this unit. What it prints is read here. Killing it leaves it at work: it
// must end by itself when nobody reads. Its exit status is the program's. The failure is an errno value.
std::expected<std::unique_ptr<Process>, int> startApart(const std::vector<std::string>& properties,
                                                        const std::vector<std::string>& arguments);

} // namespace platform
