#pragma once

#include "platform/ui/TextField.h"

#include <memory>
#include <string_view>

// What code can make of the main window's controls and a person cannot.
void selectNothing(std::string_view popUp);
void makeMixed(std::string_view checkBox);

// The controller's own outlet.
std::shared_ptr<platform::ui::TextField> textFieldOnScreen(std::string_view identifier);

// In its superview.
platform::ui::Rect frameOf(std::string_view control);
