#include "activity/model/ActivityWords.h"

#include "activity/model/Filled.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Localization.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Schedule.h"

using platform::localizedString;
using scheduling::Instant;
using scheduling::Reason;
using scheduling::State;

namespace {

// The two with what stands between the members of a list.
std::string listed(const std::string& before, const std::string& next)
{
    return before.empty() ? next : filled(localizedString("%@; %@"), {before, next});
}

std::string wordsOf(Reason reason)
{
    switch (reason) {
    case Reason::Suspended:
        return localizedString("backups suspended at that time of day");
    case Reason::Battery:
        return localizedString("on battery power");
    case Reason::Passive:
        return localizedString("nobody logged in, or the lid closed");
    case Reason::SleepPreventers:
        return localizedString("sleep prevented by a program");
    case Reason::NotWired:
        return localizedString("no wired network");
    case Reason::Running:
        return localizedString("another backup running");
    case Reason::Maintenance:
        return localizedString("an update or the uninstallation under way");
    case Reason::NoProgram:
        return localizedString("no backup program chosen, or it is not there");
    case Reason::Asleep:
        break;
    }
    return localizedString("the computer asleep or off");
}

// What a schedule that is on waits for when no moment is known.
std::string sentenceWithoutMoment(const std::optional<ScheduleSettings>& applied)
{
    if (applied && operationModeOfSettings(*applied) == OperationModeWhenInactive)
        return localizedString("Waiting for the computer to be inactive.");
    return localizedString("No backup is due.");
}

bool isOfHelper(const platform::Error& error, ZRKMessagerErrorCode code)
{
    return error.domain == ZRKMessagerErrorDomain && error.code == code;
}

} // namespace

namespace ActivityWords {

std::string stateSentence(const BackupStatus& status, const std::optional<ScheduleSettings>& applied,
                          MomentText& moments)
{
    if (!status.state)
        return localizedString("This version of Brevane does not understand what the background scheduler tells.");
    switch (*status.state) {
    case State::Off:
        return localizedString("Backups are off.");
    case State::Blocked:
        return filled(localizedString("Waiting: %@"), {reasons(status.reasons)});
    case State::Running:
        if (status.lastStart && !status.lastEnd)
            return filled(localizedString("A backup is running. Started: %@"), {moments.text(*status.lastStart)});
        return localizedString("A backup is running.");
    case State::Waiting:
        break;
    }
    if (!status.due)
        return sentenceWithoutMoment(applied);
    if (*status.due <= status.now)
        return localizedString("A backup is about to start.");
    return filled(localizedString("Next backup: %@"), {moments.text(*status.due)});
}

std::string lastBackupSentence(const BackupStatus& status, MomentText& moments)
{
    const auto succeeded = status.lastSucceeded
        ? filled(localizedString("Last successful backup: %@."), {moments.text(*status.lastSucceeded)})
        : localizedString("No backup was successful yet.");
    if (!status.lastStart)
        return localizedString("No backup yet.");
    if (!status.lastEnd)
        return succeeded;
    if (status.lastEnd == status.lastSucceeded)
        return filled(localizedString("Last backup: %@, successful."), {moments.text(*status.lastEnd)});
    const auto failed = filled(localizedString("Last backup: %@, failed."), {moments.text(*status.lastEnd)});
    return filled(localizedString("%@ %@"), {failed, succeeded});
}

std::vector<std::string> notes(const BackupStatus& status, const std::optional<ScheduleSettings>& applied,
                               MomentText& moments)
{
    std::vector<std::string> notes;
    if (status.state == State::Blocked && status.due && *status.due <= status.now)
        notes.push_back(filled(localizedString("Due since: %@."), {moments.text(*status.due)}));
    if (status.failures > 1)
        notes.push_back(filled(localizedString("Failed backups in a row: %@."), {std::to_string(status.failures)}));
    if (status.program.empty())
        notes.push_back(localizedString("No backup program is chosen."));
    if (applied && missesEntries(*applied))
        notes.push_back(localizedString("Some times of day lie in the daily suspension. Their backups are missed each "
                                        "time."));
    for (const auto& note : status.notes)
        notes.push_back(localizedString(note));
    return notes;
}

std::vector<std::string> notesOnEdits(const SchedulePreview& preview)
{
    std::vector<std::string> notes{localizedString("The edited settings are not applied yet.")};
    if (preview.startsAtOnce)
        notes.push_back(localizedString("Applying them starts a backup at once, unless something stands in its way."));
    if (preview.missesEntries)
        notes.push_back(
            localizedString("Some of their times of day lie in the daily suspension. Those backups would be "
                            "missed each time."));
    return notes;
}

std::string noMoments(const ScheduleSettings& record)
{
    const auto schedule = Schedule::fromRecord(record);
    if (!schedule.schedulesBackups())
        return localizedString("Backups are off.");
    if (schedule.mode == OperationModeWhenInactive)
        return localizedString("Backups wait until nobody uses the computer. When that will be is not known.");
    return localizedString("There is no next backup.");
}

std::string marks(const scheduling::Upcoming& moment)
{
    std::string text;
    if (moment.suspended)
        text = listed(text, localizedString("suspended"));
    if (moment.shifted)
        text = listed(text, localizedString("moved by the clock change"));
    if (moment.repeated)
        text = listed(text, localizedString("comes twice by the clock change"));
    return text;
}

std::string reasons(const ToldReasons& reasons)
{
    std::string text;
    for (const auto name : reasons.known.names())
        text = listed(text, wordsOf(*scheduling::Reasons::named(name)));
    return reasons.hasOthers || text.empty() ? listed(text, localizedString("another reason")) : text;
}

std::string sentenceForFailureToAsk(const platform::Error& error)
{
    if (isOfHelper(error, ZRKMessagerErrorServiceUnavailable))
        return localizedString("The background scheduler does not run, or is not installed.");
    if (helperDoesNotServeMessage(error))
        return localizedString("The background scheduler is of another version, which does not tell about backups. "
                               "Install the latest version of Brevane.");
    return filled(
        localizedString("%@ %@"),
        {localizedString("The background scheduler did not answer."), ZRKError::localizedDescriptionForError(error)});
}

std::string sentenceForFailureToStart(const platform::Error& error)
{
    if (isOfHelper(error, ZRKMessagerErrorServiceUnavailable))
        return localizedString("The background scheduler does not run, or is not installed.");
    if (helperDoesNotServeMessage(error))
        return localizedString("The background scheduler is of another version, which does not start backups. Install "
                               "the latest version of Brevane.");
    if (error.domain == BRVErrorDomain && error.code == BRVErrorMissingValue)
        return localizedString("No backup program is chosen.");
    return ZRKError::localizedDescriptionForError(error);
}

} // namespace ActivityWords
