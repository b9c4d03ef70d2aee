#pragma once

namespace helper {

// Whether the backup facility is at work: it holds a lock on the file "/var/run/backupd.lock" meanwhile.
bool isBackupRunning();

} // namespace helper
