#pragma once

#include "backupprogram/model/ProgramDraft.h"
#include "platform/Calendar.h"
#include "protocol/ScheduleSettings.h"
#include "schedule/model/EditorCapabilities.h"

#include <string>
#include <string_view>
#include <vector>

// The answers on the page of the first start: what is backed up, where to, and when.
struct FirstStartDraft {
    // The choices of when, by their place in the pop-up.
    enum When : int { WhenInactive = 0, EveryDay = 1 };

    std::string program; // one of programs(); empty: none is there
    std::string folder;
    std::string destination;
    std::string secretFile;
    int when = WhenInactive;
    platform::TimeOfDay time{12, 0}; // of EveryDay

    bool operator==(const FirstStartDraft&) const = default;

    // What is answered before the user does. `disks` are the mount points of what is mounted; the backups go to the
    // first one that was plugged in.
    static FirstStartDraft suggested(const ProgramOffer& offer, const std::string& home,
                                     const std::vector<std::string>& disks);
    // The same answers where something else can be chosen now.
    FirstStartDraft with(const ProgramOffer& offer) const;

    // The programs that can be set up on one page: they are ready, and need no more than folders and a password.
    static std::vector<const OfferedProgram*> programs(const ProgramOffer& offer);
    // What to install where there is none of them; null when nothing is known.
    static const OfferedProgram* programToInstall(const ProgramOffer& offer);

    // The answer that a kind of field (BackupFieldKind) takes; null when there is none for it.
    using Answer = std::string FirstStartDraft::*;
    static Answer answerOfKind(std::string_view kind);

    ProgramDraft programDraft(const ProgramOffer& offer) const;
    // The record to apply; `current` is the fetched one.
    ScheduleSettings record(const ScheduleSettings& current, const EditorCapabilities& capabilities) const;
};
