#pragma once

#include "platform/Calendar.h"
#include "protocol/Schedule.h"
#include "schedule/model/EditorCapabilities.h"
#include "schedule/model/EditorRow.h"

#include <array>
#include <optional>
#include <vector>

// The sub-records that the mode editors give, by OperationMode; nullopt for a mode whose editor was never opened.
using ModeSettings = std::array<std::optional<platform::Dictionary>, OperationModeCount>;

// What the main window's controls say. A box counts as on only when it is on; mixed is off.
struct EditorState {
    bool backups = false;
    int modeIndex = OperationModeWhenInactive; // of the mode pop-up; -1 when nothing is selected
    bool suspend = false;
    platform::TimeOfDay suspendFrom;
    platform::TimeOfDay suspendTo;
    bool dontRunWhenPassive = false;
    bool dontRunWithSleepPreventers = false;
    bool dontRunWhenNotNetworkWired = false;
    bool allowBattery = false;
    bool snapshots = false;
    bool showsAdvancedSettings = false;

    // The controls for a record, where `before` is what they said until then. A time that the record lacks, or that
    // cannot be counted, stays; so do advanced settings that are shown.
    static EditorState showing(const Schedule& schedule, const EditorState& before);

    bool enablesModes() const { return backups; }
    bool hidesAdvancedSettingsButton() const { return !backups; }
    // A key of the string table.
    const char* advancedSettingsTitle() const;
    // In the order of EditorRow.
    std::vector<EditorRow> rows(const EditorCapabilities& capabilities) const;

    // The record to apply: the current one without Disabled, then the keys that the editor writes. A key that the
    // current record has keeps its place; the others follow in the order of writing.
    ScheduleSettings record(const ScheduleSettings& current, const EditorCapabilities& capabilities,
                            const ModeSettings& modes) const;

    bool operator==(const EditorState&) const = default;
};
