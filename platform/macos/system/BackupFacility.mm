#include "platform/BackupFacility.h"

namespace platform {

bool systemHasBackupProgram()
{
    return true;
}

} // namespace platform
