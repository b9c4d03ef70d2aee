#include "schedule/model/EditorState.h"

using platform::Dictionary;

namespace {

// The three conditions as they are written. Hiding the advanced settings switches them off, and a system that cannot
// judge a condition does not write it as on.
void setConditions(ScheduleSettings& record, const EditorState& state, const EditorCapabilities& capabilities)
{
    const bool advanced = state.showsAdvancedSettings;
    record.set(ScheduleKey::DontRunWhenPassive, advanced && capabilities.passiveCondition && state.dontRunWhenPassive);
    record.set(ScheduleKey::DontRunWithSleepPreventers, advanced && state.dontRunWithSleepPreventers);
    record.set(ScheduleKey::DontRunWhenNotNetworkWired,
               advanced && capabilities.wiredNetworkCondition && state.dontRunWhenNotNetworkWired);
}

} // namespace

EditorState EditorState::showing(const Schedule& schedule, const EditorState& before)
{
    EditorState state = before;
    state.backups = schedule.schedulesBackups();
    state.modeIndex = schedule.mode;
    state.suspend = schedule.suspend;
    if (const auto& times = schedule.suspension) {
        state.suspendFrom =
            platform::timeOfDayFromComponents(times->startHour, times->startMinute).value_or(before.suspendFrom);
        state.suspendTo =
            platform::timeOfDayFromComponents(times->endHour, times->endMinute).value_or(before.suspendTo);
    }
    state.dontRunWhenPassive = schedule.dontRunWhenPassive;
    state.dontRunWithSleepPreventers = schedule.dontRunWithSleepPreventers;
    state.dontRunWhenNotNetworkWired = schedule.dontRunWhenNotNetworkWired;
    state.allowBattery = schedule.allowBattery;
    state.snapshots = schedule.schedulesSnapshots();
    state.showsAdvancedSettings = before.showsAdvancedSettings || schedule.dontRunWhenPassive
        || schedule.dontRunWithSleepPreventers || schedule.dontRunWhenNotNetworkWired;
    return state;
}

const char* EditorState::advancedSettingsTitle() const
{
    return showsAdvancedSettings ? "Hide Advanced Settings" : "Show Advanced Settings";
}

std::vector<EditorRow> EditorState::rows(const EditorCapabilities& capabilities) const
{
    using enum EditorRow;
    std::vector<EditorRow> rows{Mode};
    if (backups) {
        rows.insert(rows.end(), {ModeEditor, Suspend});
        if (capabilities.battery)
            rows.push_back(AllowBattery);
        if (showsAdvancedSettings && capabilities.passiveCondition)
            rows.push_back(DontRunWhenPassive);
        if (showsAdvancedSettings)
            rows.push_back(DontRunWithSleepPreventers);
        if (showsAdvancedSettings && capabilities.wiredNetworkCondition)
            rows.push_back(DontRunWhenNotNetworkWired);
    }
    if (capabilities.snapshots)
        rows.push_back(Snapshots);
    return rows;
}

ScheduleSettings EditorState::record(const ScheduleSettings& current, const EditorCapabilities& capabilities,
                                     const ModeSettings& modes) const
{
    ScheduleSettings record = current;
    record.remove(ScheduleKey::Disabled);
    record.set(ScheduleKey::Backups, backups);
    record.set(ScheduleKey::BackupsMode, backupsModeForIndex(modeIndex));
    for (int mode = 0; mode < OperationModeCount; ++mode) {
        if (const auto& settings = modes[static_cast<std::size_t>(mode)])
            record.set(backupsModeForIndex(mode), *settings);
    }
    record.set(ScheduleKey::Suspend, suspend);
    record.set(ScheduleKey::SuspendSettings,
               Dictionary{{ScheduleKey::StartHour, suspendFrom.hour},
                          {ScheduleKey::StartMinute, suspendFrom.minute},
                          {ScheduleKey::EndHour, suspendTo.hour},
                          {ScheduleKey::EndMinute, suspendTo.minute}});
    setConditions(record, *this, capabilities);
    if (capabilities.battery)
        record.set(ScheduleKey::AllowBattery, allowBattery);
    if (capabilities.snapshots)
        record.set(ScheduleKey::Snapshots, snapshots);
    return record;
}
