#pragma once

#include "platform/ui/View.h"

#include <string_view>

// What code can make of the main window's controls and a person cannot.
void selectNothing(std::string_view popUp);
void makeMixed(std::string_view checkBox);

// In its superview.
platform::ui::Rect frameOf(std::string_view control);
