#pragma once

namespace platform {

// Whether the system makes backups by a program of its own, so that there is none to choose.
bool systemHasBackupProgram();

} // namespace platform
