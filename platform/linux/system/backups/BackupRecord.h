#pragma once

#include "platform/BackupRunner.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

// What the one who starts a backup and the process that runs it tell each other, in files. Failures are errno values.

inline constexpr const char* BackupStateFolder = "/var/db/brevane";
inline constexpr const char* BackupLockFile = "/var/run/backupd.lock";
inline constexpr const char* BackupRecordName = "backup-run.plist";

std::expected<void, int> writeBackupJob(const BackupJob& job);
std::optional<BackupJob> readBackupJob();

// The backup that runs or ran last.
struct BackupRecord {
    std::string identifier;
    pid_t process = 0;
    std::uint64_t processStart = 0; // ticks since boot: tells a process from another that got its number
    std::int64_t began = 0;         // seconds since 1970
    std::optional<int> status;      // as in BackupEvent; nothing until the end
};

std::expected<void, int> writeBackupRecord(const BackupRecord& record);
std::optional<BackupRecord> readBackupRecord();

// 0 when there is no such process.
std::uint64_t startOfProcess(pid_t process);

} // namespace platform
