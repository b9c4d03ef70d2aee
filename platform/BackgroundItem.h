#pragma once

#include <optional>
#include <string>

namespace platform {

enum class BackgroundItemStatus { NotRegistered = 0, Enabled = 1, RequiresApproval = 2, NotFound = 3 };

// Whether the user lets the launch daemon with this property-list file run. nullopt when the system has no such notion
// or does not answer.
std::optional<BackgroundItemStatus> backgroundItemStatus(const std::string& launchDaemonPath);

// Where it cannot be opened: what users can do instead, in their language.
std::string backgroundItemAdvice();
// The same of the system's settings of backups.
std::string backupSettingsAdvice();

// Opens the place where the user can approve it. False when there is none. It may take seconds; any thread.
bool openBackgroundItemSettings();

} // namespace platform
