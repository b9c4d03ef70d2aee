#include "platform/BackupFacility.h"

namespace platform {

bool systemHasBackupProgram()
{
    return false;
}

} // namespace platform
