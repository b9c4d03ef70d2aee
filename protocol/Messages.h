#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The service that both sides meet at: a Mach service, or a name on the system bus.
inline constexpr const char* BRVSchedulerServiceName = "com.zerkolin.brevane.scheduler";

// The numbered messages. Those from 0 to 28 that have no name here are not served.
enum BRVMessage : std::int64_t {
    BRVMessageGetSettings = 1,             // reply: the schedule settings record
    BRVMessageApplySettings = 2,           // payload: the record
    BRVMessageStartBackup = 3,             // starts a backup now, whatever the conditions
    BRVMessageGetStatus = 5,               // reply: what is scheduled, what stands in the way, and the journal
    BRVMessageSetAllowWithoutPassword = 6, // payload: {Allow}
    BRVMessageGetBackupProgram = 7,        // reply: the chosen backup program and its fields, without secrets
    BRVMessageListSnapshots = 11,          // payload: a volume; reply: its local snapshots
    BRVMessageSetBackupProgram = 12,       // payload: the chosen backup program and its fields
    BRVMessageGetAutoUpdates = 18,         // reply: {Enabled}
    BRVMessageSetAutoUpdates = 21,         // payload: {Enabled}
    BRVMessageCheckForUpdates = 26,        // reply: {Version, HumanVersion, ...}
    BRVMessageInstallUpdate = 27,
    BRVMessageUninstall = 28,
};
inline constexpr std::int64_t BRVMessageLast = 28;

// The rights, which the system's rights database (macOS) or polkit (Linux) knows by these names.
inline constexpr const char* BRVRightModifySettings1 = "com.zerkolin.brevane.settings.modify-1";
inline constexpr const char* BRVRightModifySettings2 = "com.zerkolin.brevane.settings.modify-2";
inline constexpr const char* BRVRightUninstall = "com.zerkolin.brevane.uninstall";

// The rights of each message number from 0 to 28, of which the sender needs one; empty when it needs none; nullopt for
// any other number. Both sides check by this table.
std::optional<std::vector<std::string>> BRVAuthorizationRightsForMessage(std::int64_t message);

// Keys of the small payloads and replies.
namespace PayloadKey {

inline constexpr const char* Allow = "Allow";               // boolean: settings may be changed without a password
inline constexpr const char* Applied = "Applied";           // boolean: the reply to a change that was made
inline constexpr const char* Enabled = "Enabled";           // boolean: updates are installed by themselves
inline constexpr const char* Version = "Version";           // string, compared
inline constexpr const char* HumanVersion = "HumanVersion"; // string, shown

} // namespace PayloadKey
