#pragma once

#include "schedule/model/EditorCapabilities.h"

#include <optional>

// Whether a change of the battery box, to off or not, is followed by the note that the system has a setting of its own
// for backups on battery power. `requiresACPower` is that setting; nullopt when there is none.
bool needsBatteryNote(bool isOff, const EditorCapabilities& capabilities, std::optional<bool> requiresACPower);
