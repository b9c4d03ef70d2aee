#pragma once

#include "platform/ui/View.h"

#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

// What the platform finds wrong with a laid-out view and the views in it that are not hidden, one sentence each in
// English: places that the constraints leave open, and texts that are cut off. Main thread.
std::vector<std::string> layoutFaults(const std::shared_ptr<View>& view);

} // namespace platform::ui
