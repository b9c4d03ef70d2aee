#pragma once

namespace helper {

// Whether the backup facility is at work: it holds a lock on the file "/var/run/backupd.lock" meanwhile.
bool isBackupRunning();

// Returns when it is not.
void waitForBackup();

} // namespace helper
