#include "tests/platform/ScriptedBackupFacility.h"

#include "platform/BackupFacility.h"

namespace {

bool& hasProgram()
{
    static bool value = false;
    return value;
}

} // namespace

namespace scripted::facility {

void setHasBackupProgram(bool has)
{
    hasProgram() = has;
}

void reset()
{
    setHasBackupProgram(false);
}

} // namespace scripted::facility

bool platform::systemHasBackupProgram()
{
    return hasProgram();
}
