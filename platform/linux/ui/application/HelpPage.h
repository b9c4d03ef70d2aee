#pragma once

namespace platform::ui {

// Opens the help in the user's browser: its first page in the first of the user's languages that it is written in,
// otherwise in English.
void openHelp();

} // namespace platform::ui
