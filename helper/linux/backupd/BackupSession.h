#pragma once

#include "helper/linux/backupd/BackupLog.h"
#include "platform/FileDescriptor.h"
#include "platform/linux/system/backups/BackupRecord.h"

#include <optional>
#include <string>

namespace helper {

// Runs the job that its standard input holds, if it has this identifier. Tells on the standard output, and writes down,
// that it runs and how it ended. Holds the backup facility's lock meanwhile.
class BackupSession {
public:
    explicit BackupSession(std::string identifier) : _identifier(std::move(identifier)) { }

    // The exit status of this process: that of the job, EX_CONFIG where there is no such job, EX_TEMPFAIL while another
    // backup holds the lock, or when the job is not to begin any more.
    int run();

private:
    static platform::Data readInput();
    bool takeLock();
    int runCommands(const platform::BackupJob& job);
    void record(std::optional<int> status);

    std::string _identifier;
    BackupLog _log;
    platform::FileDescriptor _lock;
    platform::BackupRecord _record;
};

} // namespace helper
