#pragma once

// The chosen backup program, as it is sent, stored and fetched. No secret is ever among its fields.
namespace BackupProgramKey {

// The payload of BRVMessageSetBackupProgram, and part of the reply to BRVMessageGetBackupProgram.
inline constexpr const char* Program = "Program"; // string: its identifier; absent: none is chosen
inline constexpr const char* Fields = "Fields";   // dictionary: what the program needs, by the keys of its fields
inline constexpr const char* PreventSleep = "PreventSleep"; // boolean: the computer stays awake during a backup

// Only in the reply, and only true: no schedule was ever applied on this machine.
inline constexpr const char* NeverApplied = "NeverApplied";

// Only in the reply: an array of dictionaries, one a program that can be chosen, with the keys below and Program. First
// comes what is best for who has none.
inline constexpr const char* Programs = "Programs";
inline constexpr const char* Name = "Name";           // string: as a person reads it
inline constexpr const char* Package = "Package";     // string: the system's package that has it; absent: it needs none
inline constexpr const char* Installed = "Installed"; // boolean
inline constexpr const char* Install = "Install";     // string: the command that installs it; absent: none is known
inline constexpr const char* Missing = "Missing";     // string: a file that it needs and that is not there
// Strings for people, in which "{Key}" stands for the field of that key: where the backups are, a sentence in English
// that is looked up; and the commands that bring files back, one a line.
inline constexpr const char* Place = "Place";
inline constexpr const char* Restore = "Restore";
inline constexpr const char* FieldList = "FieldList"; // array of dictionaries, in the order to ask, with the keys below
inline constexpr const char* Key = "Key";             // string: the key among Fields
inline constexpr const char* Kind = "Kind";           // string: one of BackupFieldKind
inline constexpr const char* Required = "Required";   // boolean

} // namespace BackupProgramKey

// What a field holds. Every path is absolute, without "." or ".." in it.
namespace BackupFieldKind {

inline constexpr const char* Folders = "Folders";         // array of strings: what is backed up
inline constexpr const char* Destination = "Destination"; // string: the folder that the program writes to
inline constexpr const char* Patterns = "Patterns";       // array of strings: what is left out
inline constexpr const char* SecretFile = "SecretFile";   // string: a file that only the administrator can read
inline constexpr const char* Word = "Word";               // string of letters, digits, "-" and "_"
inline constexpr const char* Unit = "Unit";               // string: the name of a system service

} // namespace BackupFieldKind

// What the error of a refused choice expected of a field: its user info's "expected". A "path" beside it is the part of
// the file system that is at fault. The application has a sentence for each.
namespace BackupFieldExpectation {

inline constexpr const char* ExpectedKey = "expected";
inline constexpr const char* PathKey = "path";
inline constexpr const char* Folder = "absolute folder";
inline constexpr const char* Folders = "array of absolute folders";
inline constexpr const char* Patterns = "array of patterns";
inline constexpr const char* ForBackups = "folder for backups, outside of the system's own";
inline constexpr const char* OfAdministrator = "folder that nobody but the administrator can change";
inline constexpr const char* OnMountedDisk = "folder on a disk that is there";
inline constexpr const char* WithPassword = "folder on no disk of a user's while no password is asked for";
inline constexpr const char* Secret = "file that only the administrator can read";
inline constexpr const char* Word = "word";
inline constexpr const char* Unit = "name of a system service";

} // namespace BackupFieldExpectation
