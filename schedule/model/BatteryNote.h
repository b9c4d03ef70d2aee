#pragma once

#include "platform/PropertyList.h"
#include "schedule/model/EditorCapabilities.h"

#include <optional>

// Whether a change of the battery box, to off or not, is followed by the note that the system has a setting of its own
// for backups on battery power. `requiresACPower` is that setting as it is stored; a value that is no number counts as
// none.
bool needsBatteryNote(bool isOff, const EditorCapabilities& capabilities,
                      const std::optional<platform::PropertyList>& requiresACPower);
