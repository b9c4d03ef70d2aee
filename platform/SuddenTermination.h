#pragma once

#include "platform/SystemInformation.h"

namespace platform {

// While one of them lives, the system ends this process only after asking it: it holds something that must be saved.
class SuddenTerminationPause {
public:
    SuddenTerminationPause() { disableSuddenTermination(); }
    ~SuddenTerminationPause() { enableSuddenTermination(); }
    SuddenTerminationPause(const SuddenTerminationPause&) = delete;
    SuddenTerminationPause& operator=(const SuddenTerminationPause&) = delete;
};

} // namespace platform
