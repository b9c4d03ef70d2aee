#pragma once

#include "platform/BackupRunner.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>

namespace platform {

// What the one who starts a backup and the process that runs it tell each other, in files. Failures are errno values.

inline constexpr const char* BackupStateFolder = "/var/db/brevane";
inline constexpr const char* BackupLockFile = "/var/run/backupd.lock";
inline constexpr const char* BackupRecordName = "backup-run.plist";

// The job travels to its process by a descriptor, so that a full disk is no hindrance; the file is for those who find
// the backup later.
Data encodedBackupJob(const BackupJob& job);
std::optional<BackupJob> decodedBackupJob(std::span<const std::uint8_t> bytes);
std::expected<void, int> writeBackupJob(const BackupJob& job);
std::optional<BackupJob> readBackupJob();

// What the process says of itself to the one who has started it, besides the record on disk: a line when it has begun,
// and one with its status before its end.
std::string lineOfBegin(pid_t process, std::uint64_t processStart);
std::string lineOfEnd(int status);

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
