#pragma once

#include "platform/ui/Alert.h"
#include "platform/ui/Application.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/Menu.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextField.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A person at the real controls: mouse and key events, no shortcuts past the toolkit. What a person cannot do (clicking
// what is hidden or disabled) throws std::logic_error. Main thread only.
namespace user {

enum class Key { Return, Escape, Tab, Backtab, Space, Up, Down, Left, Right, Home, End, Backspace, Delete };

struct Modifiers {
    bool control = false;
    bool shift = false;
    bool alt = false;
};

void click(platform::ui::View& view);
void click(platform::ui::MenuItem& item);
void press(platform::ui::View& view, Key key, Modifiers modifiers = {});
// One letter or digit with modifiers: pressCharacter(view, 'a', {.control = true}).
void pressCharacter(platform::ui::View& view, char character, Modifiers modifiers);

// At the cursor, over the selection; see also replaceText.
void type(platform::ui::TextField& field, std::string_view text);
// Selects everything, then types.
void replaceText(platform::ui::TextField& field, std::string_view text);
// From the clipboard, over the selection.
void paste(platform::ui::TextField& field, std::string_view text);

void choose(platform::ui::PopUpButton& popUp, int index);

enum class StepDirection { Up, Down };
void step(platform::ui::Stepper& stepper, StepDirection direction);

// The action runs for every step on the way.
void pick(platform::ui::DatePicker& picker, platform::TimeOfDay time);

struct ShownAlert {
    std::string messageText;
    std::string informativeText;
    std::vector<std::string> buttons;
    bool isSheet = false;
    platform::ui::AlertStyle style = platform::ui::AlertStyle::Warning;
    // The check box below the texts.
    std::optional<std::string> checkBox = std::nullopt;
    bool checkBoxIsOn = false;
    bool checkBoxIsLarge = false;
    bool checkBoxIsSwitchButton = false;
};

// The front one on screen.
std::optional<ShownAlert> currentAlert();
// In place of a button: the close button of its frame.
inline constexpr int CloseButton = -1;
// Presses a button of it. With a sheet, its completion has run when this returns.
void answer(int buttonIndex);
// With the Escape key.
void cancelAlert();
// The next alert, modal or sheet, is answered as soon as it shows, and is noted. Calls add up, one for each alert. A
// modal alert for which nothing was prepared ends the test program with its texts, since nobody would answer it.
void answerNextAlert(int buttonIndex);
// The same, after a click on its check box.
void tickAndAnswerNextAlert(int buttonIndex);
// How many of them still wait for their alert.
std::size_t preparedAnswers();
// From now on every alert for which nothing was prepared is answered so, with the index of a button; without a
// function as before. Sheets are answered too.
void answerEveryAlert(std::function<int(const ShownAlert&)> choose);
// Those that were answered, oldest first; forgets them.
std::vector<ShownAlert> takeAnsweredAlerts();

// False when the time is over.
bool runEventsUntil(const std::function<bool()>& predicate, int milliseconds);
// What waits now, and what that leads to.
void runEvents();

// The toolkit's application of the test program tells this delegate what applicationMain would. Held weakly.
void launch(const std::shared_ptr<platform::ui::ApplicationDelegate>& delegate);
// The windows on screen, by their identifiers: all, and the one with the keyboard ("" for none).
std::vector<std::string> windows();
std::string activeWindow();
bool isMinimised(std::string_view window);
// What its labels say, from top to bottom.
std::vector<std::string> textsIn(std::string_view window);
std::string titleOf(std::string_view window);
// Clicks the button of this title in it.
void pressButton(std::string_view window, std::string_view title);
// Keys with modifiers, such as "Ctrl+,", in a window that is on screen.
void pressKeys(std::string_view window, std::string_view keys);
// With its frame's close button.
void closeWindow(std::string_view identifier);
// The application asked its delegate and would have ended.
bool didTerminate();

// Made by the test program's main before its cases run, and gone after them.
class Session {
public:
    Session(int& argc, char** argv);
    ~Session();

    struct Native;

private:
    std::unique_ptr<Native> _native;
};

} // namespace user
