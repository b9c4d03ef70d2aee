#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform::ui {

class View;
class Window;

// Warning is the style of every ordinary notice, good news included. Where somebody asks for it, it looks like a
// warning.
enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

// A message with buttons. The answer is 1000 for the first button, 1001 for the second and so on. Without added buttons
// there is one, the platform's "OK". Escape and the window's close button press the button that is titled "Cancel", and
// no other: where there is none, they stop the alert. Any answer that is no button's means that nothing was chosen.
class Alert {
public:
    static constexpr int FirstButtonReturn = 1000;
    static constexpr int SecondButtonReturn = 1001;
    static constexpr int ThirdButtonReturn = 1002;
    static constexpr int Stop = -1000;  // closed without a button
    static constexpr int Abort = -1001; // the application ends

    Alert();
    ~Alert();
    Alert(Alert&&) noexcept;
    Alert& operator=(Alert&&) noexcept;

    void setStyle(AlertStyle style);
    void setMessageText(const std::string& text);
    void setInformativeText(const std::string& text);
    void addButton(const std::string& title);
    // Shown below the texts; it must be in no other view, and is in none again when the alert was answered.
    void setAccessoryView(const std::shared_ptr<View>& view);

    // Blocks until answered, while the application's events are served.
    int runModal();
    // Attached to the window, which takes no input until it is answered. Returns at once; the completion (may be empty)
    // runs on the main thread after the sheet has closed. The sheet outlives this object.
    void beginSheet(const std::shared_ptr<Window>& window, std::function<void(int)> completion);

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
