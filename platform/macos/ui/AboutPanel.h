#pragma once

#include "platform/ui/Button.h"

#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

// The one that is open, or a new one.
void orderFrontPanelAboutVersion(const std::string& version, std::vector<std::shared_ptr<Button>> links);

} // namespace platform::ui
