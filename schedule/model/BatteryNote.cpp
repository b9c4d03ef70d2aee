#include "schedule/model/BatteryNote.h"

bool needsBatteryNote(bool isOff, const EditorCapabilities& capabilities, std::optional<bool> requiresACPower)
{
    return !isOff && capabilities.batterySetting && requiresACPower.value_or(true);
}
