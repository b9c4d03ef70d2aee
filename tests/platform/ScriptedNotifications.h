#pragma once

#include "platform/DistributedNotifications.h"

#include <string>
#include <vector>

// What programs tell each other. Main thread only.
namespace scripted::notifications {

void reset(); // nothing posted
// Another program posts the name; its observers have run when this returns.
void arrive(const std::string& name);
// What this process posted since reset(), in order.
std::vector<std::string> posted();

} // namespace scripted::notifications
