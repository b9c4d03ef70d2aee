#pragma once

#include "platform/ui/PopUpButton.h"

#include <string>
#include <vector>

// Gives a pop-up these items and selects one, and changes only what is not so already.
void showTitles(platform::ui::PopUpButton& popUp, const std::vector<std::string>& titles, int selected);
