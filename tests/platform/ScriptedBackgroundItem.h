#pragma once

#include "platform/BackgroundItem.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The user's approval of the launch daemon. One thread at a time.
namespace scripted::background {

// No status, settings that open, nothing asked.
void reset();

void setStatus(std::optional<platform::BackgroundItemStatus> status);
void setSettingsOpen(bool opens);

// The paths whose status was asked for, and how often the settings were to be opened, since reset().
std::vector<std::string> askedPaths();
std::size_t settingsOpened();

} // namespace scripted::background
