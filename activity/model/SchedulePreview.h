#pragma once

#include "activity/model/BackupStatus.h"
#include "protocol/ScheduleSettings.h"
#include "scheduling/Instant.h"

#include <vector>

// Whether two records mean the same for backups, however they are written.
bool meanTheSame(const ScheduleSettings& one, const ScheduleSettings& other);

// What a record that is not applied yet would lead to if it were applied now, by the same rules by which the helper
// starts backups.
struct SchedulePreview {
    bool isOn = false;
    std::vector<scheduling::Upcoming> upcoming; // earliest first
    // A backup would start, as far as the status tells what stands in the way: on what is not known it may still wait.
    bool startsAtOnce = false;
    bool missesEntries = false; // some calendar entry, each time, in the daily suspension

    bool operator==(const SchedulePreview&) const = default;
};

// `applied` is in force, with this status. Nothing is known of a zone that the system does not know.
SchedulePreview previewOf(const ScheduleSettings& edited, const ScheduleSettings& applied, const BackupStatus& status,
                          scheduling::Now now);

// Whether the record has calendar entries that are missed each time.
bool missesEntries(const ScheduleSettings& record);
