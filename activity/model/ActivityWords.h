#pragma once

#include "activity/model/BackupStatus.h"
#include "activity/model/MomentText.h"
#include "activity/model/SchedulePreview.h"
#include "platform/Error.h"

#include <optional>
#include <string>
#include <vector>

// What the window says, in sentences of the user's language.
namespace ActivityWords {

// "Waiting: on battery power". Without the applied record it is less exact where nothing is known of the next backup.
std::string stateSentence(const BackupStatus& status, const std::optional<ScheduleSettings>& applied,
                          MomentText& moments);
// "Last backup: Today, 09:00, successful."
std::string lastBackupSentence(const BackupStatus& status, MomentText& moments);
// What else is to be known of the schedule in force.
std::vector<std::string> notes(const BackupStatus& status, const std::optional<ScheduleSettings>& applied,
                               MomentText& moments);
// What applying the edits would lead to.
std::vector<std::string> notesOnEdits(const SchedulePreview& preview);

// What a list without moments says.
std::string noMoments(const ScheduleSettings& record);
// "suspended; moved by the clock change"
std::string marks(const scheduling::Upcoming& moment);
// What stands in the way, without a full stop.
std::string reasons(const ToldReasons& reasons);

// The helper could not be asked, or did not start a backup.
std::string sentenceForFailureToAsk(const platform::Error& error);
std::string sentenceForFailureToStart(const platform::Error& error);

} // namespace ActivityWords

// What happened, one line an entry, newest first; a sentence where nothing has.
std::string journalText(const std::vector<scheduling::JournalEntry>& journal, MomentText& moments);
