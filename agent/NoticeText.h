#pragma once

#include "agent/Notice.h"

#include <string>

namespace agent {

// What the user reads, in the user's language.
struct NoticeText {
    std::string title;
    std::string body; // sentences

    static NoticeText of(const Notice& notice);
};

} // namespace agent
