#include "schedule/model/BatteryNote.h"

bool needsBatteryNote(bool isOff, const EditorCapabilities& capabilities,
                      const std::optional<platform::PropertyList>& requiresACPower)
{
    if (isOff || !capabilities.batterySetting)
        return false;
    const bool isKnownToBeFine = requiresACPower && requiresACPower->isNumber() && !requiresACPower->boolValue();
    return !isKnownToBeFine;
}
