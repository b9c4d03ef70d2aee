#include "platform/ui/BareApplication.h"
#include "platform/ui/LayoutFaults.h"
#include "schedule/BRVCalendarIntervalViewController.h"
#include "schedule/BRVIntervalViewController.h"
#include "schedule/BRVWhenInactiveViewController.h"
#include "schedule/model/EditorState.h"
#include "shell/MainWindowStacks.h"
#include "shell/menus/MainMenu.h"
#include "shell/selfcheck/SelfCheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

using namespace platform::ui;

namespace selfcheck {

namespace {

constexpr double settlingTime = 0.05; // seconds

constexpr std::array windowInterfaces = {"BRVPreferencesController",    "BRVConsole",
                                         "BRVLocalSnapshotsController", "BRVActivityController",
                                         "BRVBackupProgramController",  "BRVFirstStartController"};

// Its views, without its window and its menus.
std::vector<std::shared_ptr<View>> outletsOf(const Interface& interface)
{
    std::set<std::string> others;
    if (interface.window())
        others.insert(interface.window()->identifier());
    for (const auto& menu : mainMenu(menuConvention())) {
        for (const auto& group : menu.groups) {
            for (const auto& item : group)
                others.insert(item.identifier);
        }
    }
    std::vector<std::shared_ptr<View>> views;
    for (const auto& identifier : interface.identifiers()) {
        if (!others.contains(identifier))
            views.push_back(interface.outlet<View>(identifier));
    }
    return views;
}

// In the content and not hidden, nor anything that it stands in.
bool isSeen(const std::shared_ptr<View>& view, const std::shared_ptr<View>& content)
{
    for (auto each = view; each; each = each->superview()) {
        if (each == content)
            return true;
        if (each->isHidden())
            return false;
    }
    return false;
}

std::string textOf(const Rect& frame)
{
    std::string text;
    for (const double value : {frame.x, frame.y, frame.width, frame.height})
        text += " " + std::to_string(static_cast<int>(value));
    return text;
}

// A view has an extent and reaches over no edge of what it stands in, but for the width of a line.
std::optional<std::string> frameFault(const View& view)
{
    constexpr double line = 1;
    const Rect frame = view.frame();
    if (frame.width <= 0 || frame.height <= 0)
        return view.identifier() + " has no extent:" + textOf(frame);
    const auto holder = view.superview();
    if (!holder)
        return std::nullopt;
    const Rect outer = holder->frame();
    if (frame.x < -line || frame.y < -line || frame.x + frame.width > outer.width + line
        || frame.y + frame.height > outer.height + line)
        return view.identifier() + " reaches out of its place:" + textOf(frame) + " in" + textOf(outer);
    return std::nullopt;
}

// What is seen of the views lies right in the window; how many that are.
std::expected<int, std::string> checkLayout(Window& window, const std::vector<std::shared_ptr<View>>& views)
{
    window.layoutIfNeeded();
    const auto content = window.contentView();
    int count = 0;
    for (const auto& view : views) {
        if (!isSeen(view, content) || view == content)
            continue;
        if (auto fault = frameFault(*view))
            return std::unexpected(std::move(*fault));
        ++count;
    }
    const auto faults = layoutFaults(content);
    if (!faults.empty())
        return std::unexpected(faults.front());
    return count;
}

Finding checkWindow(const char* name)
{
    const auto interface = Interface::load(name);
    const auto views = outletsOf(*interface);
    const auto first = checkLayout(*interface->window(), views);
    if (!first)
        return std::unexpected("as loaded: " + first.error());
    // What holds others of them, such as rows that wait for their place, stays as it is.
    for (const auto& view : views) {
        if (std::ranges::none_of(views, [&view](const auto& each) { return each->superview() == view; }))
            view->setHidden(false);
    }
    const auto all = checkLayout(*interface->window(), views);
    if (!all)
        return std::unexpected("with all that can be hidden: " + all.error());
    return std::to_string(*first) + " and " + std::to_string(*all) + " views,"
        + textOf(interface->window()->contentView()->frame());
}

struct MainWindow {
    std::unique_ptr<Interface> interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    MainWindowOutlets outlets{*interface};
    MainWindowStacks stacks{outlets};
    std::array<std::shared_ptr<BRVViewController>, OperationModeCount> modes{
        std::make_shared<BRVWhenInactiveViewController>(), BRVIntervalViewController::create(),
        BRVCalendarIntervalViewController::create()}; // by OperationMode
    std::vector<std::shared_ptr<View>> views = outletsOf(*interface);

    MainWindow()
    {
        stacks.arrange();
        outlets.window->layoutIfNeeded();
        outlets.window->makeKeyAndOrderFront(); // a window that nobody sees need not follow its rows
        for (const auto& mode : modes) {
            mode->setSettings(nullptr);
            views.push_back(mode->view());
        }
    }

    std::expected<int, std::string> check(const EditorState& state)
    {
        static const auto capabilities = EditorCapabilities::of(true, [](unsigned) { return true; });
        stacks.show(state.rows(capabilities), modes.at(static_cast<std::size_t>(state.modeIndex))->view());
        (void)serveUntil([] { return false; }, settlingTime);
        return checkLayout(*outlets.window, views);
    }
};

// Once up and once down, so that each state follows a smaller one and a larger one.
Finding checkMainWindow()
{
    MainWindow window;
    std::vector<EditorState> states;
    for (const bool backups : {false, true}) {
        for (const bool advanced : {false, true}) {
            for (int mode = 0; mode < OperationModeCount; ++mode) {
                EditorState state;
                state.backups = backups;
                state.showsAdvancedSettings = advanced;
                state.modeIndex = mode;
                states.push_back(state);
            }
        }
    }
    states.insert(states.end(), states.rbegin(), states.rend());
    std::vector<Rect> frames;
    for (const auto& state : states) {
        const auto checked = window.check(state);
        if (!checked)
            return std::unexpected("state " + std::to_string(frames.size()) + ": " + checked.error());
        frames.push_back(window.outlets.stackView->frame());
    }
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const double difference = frames[i].height - frames[frames.size() - 1 - i].height;
        if (difference > 1 || difference < -1)
            return std::unexpected("state " + std::to_string(i)
                                   + " is not as high on the way back:" + textOf(frames[i]));
    }
    return std::to_string(states.size()) + " states," + textOf(window.interface->window()->contentView()->frame());
}

} // namespace

std::vector<Check> interfaceChecks()
{
    std::vector<Check> checks{{"main window", checkMainWindow}};
    for (const char* const name : windowInterfaces)
        checks.push_back({std::string("window of ") + name, [name] { return checkWindow(name); }});
    return checks;
}

} // namespace selfcheck
