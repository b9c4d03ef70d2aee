#pragma once

namespace scripted::facility {

// Whether the system has a backup program of its own. False at first.
void setHasBackupProgram(bool has);
void reset();

} // namespace scripted::facility
