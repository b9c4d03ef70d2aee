#pragma once

#include <functional>

namespace platform::ui {

// Runs the body with controls and queues in working order, but without the application: it has no menus, knows of no
// other start and ends with the body, whose result is given back. Once in a process, on the main thread.
int runWithControls(int argc, char** argv, const std::function<int()>& body);

// Serves events and the main queue until the answer is yes. False when that takes longer than the seconds.
bool serveUntil(const std::function<bool()>& isDone, double seconds);

} // namespace platform::ui
