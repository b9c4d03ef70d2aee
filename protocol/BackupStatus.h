#pragma once

// What is told of backups: the reply to BRVMessageGetStatus.
namespace BackupStatusKey {

inline constexpr const char* Now = "Now";                     // date: when it was told
inline constexpr const char* Zone = "Zone";                   // string: the zone's IANA name
inline constexpr const char* State = "State";                 // string: "off", "waiting", "blocked" or "running"
inline constexpr const char* Due = "Due";                     // date of the next backup; absent: not known
inline constexpr const char* Reasons = "Reasons";             // array of strings: what stands in the way
inline constexpr const char* LastStart = "LastStart";         // date; absent: there was none
inline constexpr const char* LastEnd = "LastEnd";             // date; absent with a LastStart: it runs
inline constexpr const char* LastSucceeded = "LastSucceeded"; // date: the end of the last one that succeeded
inline constexpr const char* Failures = "Failures";           // integer: in a row
inline constexpr const char* Program =
    "Program"; // string: the backup program's name for people; absent: none is chosen
// Array of strings, sentences in English: what the system keeps from the helper, as far as it was found out at its
// start. Absent when there is nothing to say.
inline constexpr const char* Notes = "Notes";
inline constexpr const char* Upcoming = "Upcoming"; // array of dictionaries, earliest first, with the keys below
inline constexpr const char* Journal = "Journal";   // array of dictionaries, newest first, with the keys below

// Of a moment to come.
inline constexpr const char* At = "At";               // date; of an entry of the journal too
inline constexpr const char* Local = "Local";         // string: as "2026-10-25T02:30:00+01:00"
inline constexpr const char* Suspended = "Suspended"; // boolean: lies in the daily suspension
inline constexpr const char* Shifted = "Shifted";     // boolean: clocks put forward have moved it
inline constexpr const char* Repeated = "Repeated";   // boolean: its local time comes twice

// Of an entry of the journal, which has At, Due and Reasons too.
inline constexpr const char* Event = "Event";         // string: "start", "end", "missed" or "blocked"
inline constexpr const char* Count = "Count";         // integer: missed moments told as one
inline constexpr const char* Succeeded = "Succeeded"; // boolean
inline constexpr const char* Text = "Text";           // string: a sentence in English

} // namespace BackupStatusKey

// The distributed notification that says that the status has changed.
inline constexpr const char* BRVDidChangeBackupStatus = "com.zerkolin.brevane.status";
