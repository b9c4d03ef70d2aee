#pragma once

#include "platform/PropertyList.h"

namespace platform {

// What the agent remembers of a user's earlier sessions, in the user's state folder. A damaged file counts as an empty
// one, which the next change replaces.
Dictionary readNotices();
// False when it could not be kept.
bool writeNotices(const Dictionary& notices);

} // namespace platform
