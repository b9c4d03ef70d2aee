#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace platform::ui {

// Runs the work on another thread, and serves the application's events until it has run. When that takes longer than
// three seconds, a small window shows the text. False when the user closes that window or the application ends
// meanwhile: the work goes on, so it owns what it uses. Main thread.
bool waitFor(const std::string& text, std::function<void()> work);

// The same for work that has an answer; false also when it is not waited for anymore.
inline bool waitForAnswer(const std::string& text, std::function<bool()> work)
{
    const auto answer = std::make_shared<bool>(false);
    const bool isThere = waitFor(text, [answer, work = std::move(work)] { *answer = work(); });
    return isThere && *answer;
}

} // namespace platform::ui
