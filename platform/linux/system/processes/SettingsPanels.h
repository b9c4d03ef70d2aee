#pragma once

#include <string>
#include <vector>

namespace platform {

// A program that opens a panel of a desktop's settings.
struct SettingsPanel {
    const char* desktop; // as XDG_CURRENT_DESKTOP names it; empty for any
    std::vector<std::string> command;
};

// Opens the first of the panels that is installed and does not fail, those of the user's own desktop before others.
// Returns once that is known, which takes up to two seconds for each. False when none opens.
bool openSettingsPanel(std::vector<SettingsPanel> panels);

// What is nearest to a settings pane of macOS, by its path; empty for a path that is none or has none.
std::vector<SettingsPanel> panelsForPane(const std::string& path);

} // namespace platform
