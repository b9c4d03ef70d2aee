#pragma once

#include "agent/BackupStatus.h"
#include "agent/Notice.h"
#include "agent/NoticeMemory.h"
#include "scheduling/Instant.h"

#include <optional>
#include <vector>

namespace agent {

// Of what the user is to be told now, at most once a day of one cause, and when to look again unless something happens.
struct NoticePlan {
    std::vector<Notice> tell;
    std::optional<scheduling::Instant> next;

    // The memory has observed the status.
    static NoticePlan at(const BackupStatus& status, const NoticeMemory& memory);
};

} // namespace agent
