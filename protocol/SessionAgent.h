#pragma once

// What the application and the agent of a user's session both know.

// The user's default that lets the agent tell of trouble with backups. A boolean; absent is true.
inline constexpr const char* BRVNotifiesOfBackups = "NotifiesOfBackups";

// The application's arguments that open a window of it at its start, or of the one that runs already.
inline constexpr const char* BRVShowArgument = "--show";
inline constexpr const char* BRVShowActivity = "activity";
inline constexpr const char* BRVShowLog = "log";
