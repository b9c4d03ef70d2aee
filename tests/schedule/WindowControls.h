#pragma once

#include <string_view>

// What code can make of the main window's controls and a person cannot.
void selectNothing(std::string_view popUp);
void makeMixed(std::string_view checkBox);
