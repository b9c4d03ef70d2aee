#include "firststart/model/FirstStartDraft.h"

#include "protocol/BackupProgram.h"
#include "schedule/model/CalendarState.h"
#include "schedule/model/EditorState.h"

#include <algorithm>
#include <array>

namespace {

// Where desktops mount the disks that are plugged in.
constexpr std::array placesOfDisks{"/media/", "/run/media/"};
constexpr const char* folderOnDisk = "/Brevane";
constexpr const char* folderWithoutDisk = "/var/backups/brevane";

bool isPluggedIn(const std::string& disk)
{
    return std::ranges::any_of(placesOfDisks, [&](const char* place) { return disk.starts_with(place); });
}

bool isForOnePage(const OfferedProgram& program)
{
    return !program.package.empty() && std::ranges::all_of(program.fields, [](const OfferedField& field) {
        return !field.isRequired || field.kind == BackupFieldKind::Folders || field.kind == BackupFieldKind::Destination
            || field.kind == BackupFieldKind::SecretFile;
    });
}

} // namespace

std::vector<const OfferedProgram*> FirstStartDraft::programs(const ProgramOffer& offer)
{
    std::vector<const OfferedProgram*> programs;
    for (const auto& each : offer.programs) {
        if (each.isReady() && isForOnePage(each))
            programs.push_back(&each);
    }
    return programs;
}

const OfferedProgram* FirstStartDraft::programToInstall(const ProgramOffer& offer)
{
    const auto found = std::ranges::find_if(offer.programs, [](const auto& each) {
        return !each.isInstalled && !each.fields.empty() && isForOnePage(each);
    });
    return programs(offer).empty() && found != offer.programs.end() ? &*found : nullptr;
}

FirstStartDraft FirstStartDraft::suggested(const ProgramOffer& offer, const std::string& home,
                                           const std::vector<std::string>& disks)
{
    FirstStartDraft draft;
    draft.folder = home;
    const auto disk = std::ranges::find_if(disks, isPluggedIn);
    draft.destination = disk == disks.end() ? folderWithoutDisk : *disk + folderOnDisk;
    return draft.with(offer);
}

FirstStartDraft FirstStartDraft::with(const ProgramOffer& offer) const
{
    auto draft = *this;
    const auto known = programs(offer);
    if (std::ranges::find(known, program, [](const auto* each) { return each->identifier; }) == known.end())
        draft.program = known.empty() ? std::string() : known.front()->identifier;
    return draft;
}

FirstStartDraft::Answer FirstStartDraft::answerOfKind(std::string_view kind)
{
    if (kind == BackupFieldKind::Folders)
        return &FirstStartDraft::folder;
    if (kind == BackupFieldKind::Destination)
        return &FirstStartDraft::destination;
    return kind == BackupFieldKind::SecretFile ? &FirstStartDraft::secretFile : nullptr;
}

ProgramDraft FirstStartDraft::programDraft(const ProgramOffer& offer) const
{
    ProgramDraft draft;
    const auto* const chosen = offer.program(program);
    if (!chosen)
        return draft;
    draft.program = program;
    for (const auto& field : chosen->fields) {
        const auto answer = answerOfKind(field.kind);
        if (!answer || (this->*answer).empty())
            continue;
        if (field.kind == BackupFieldKind::Folders)
            draft.setTexts(field.key, {this->*answer});
        else
            draft.setText(field.key, this->*answer);
    }
    return draft;
}

ScheduleSettings FirstStartDraft::record(const ScheduleSettings& current, const EditorCapabilities& capabilities) const
{
    auto state = EditorState::showing(Schedule::fromRecord(current), {});
    ModeSettings modes;
    state.backups = true;
    state.modeIndex = when == EveryDay ? OperationModeCalendarIntervals : OperationModeWhenInactive;
    if (when == EveryDay) {
        const CalendarState calendar{.rows = {{CalendarRow::everyDayIndex, time}}, .asap = true};
        modes[OperationModeCalendarIntervals] = calendar.record();
    }
    return state.record(current, capabilities, modes);
}
