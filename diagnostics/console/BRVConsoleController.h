#pragma once

#include "diagnostics/console/LogFetch.h"
#include "platform/Clock.h"
#include "platform/Queue.h"
#include "platform/StyledText.h"
#include "platform/ui/Button.h"
#include "platform/ui/Interface.h"
#include "platform/ui/ProgressIndicator.h"
#include "platform/ui/SavePanel.h"
#include "platform/ui/TextView.h"

#include <chrono>
#include <memory>
#include <string>

// The log console's window: what the product and the backup daemon logged, fetched when it opens and when the user asks
// for it. Main thread, but for the fetch operations. At most one fetch runs at a time.
class BRVConsoleController : public std::enable_shared_from_this<BRVConsoleController> {
public:
    static constexpr const char* windowNibName = "BRVConsole";

    static std::shared_ptr<BRVConsoleController> create();
    // Waits for what the user is saving, which is not lost when the application ends.
    ~BRVConsoleController();
    BRVConsoleController(const BRVConsoleController&) = delete;
    BRVConsoleController& operator=(const BRVConsoleController&) = delete;

    // Brings the window to the front. Loads it, and fetches the log, the first time.
    void showWindow();
    // Null before it was first shown.
    std::shared_ptr<platform::ui::Window> window() const;

    void windowDidLoad();
    void refresh();
    // Ends a fetch and leaves the text as it was.
    void stopFetch();
    // The action "export", which is a word of the language.
    void exportLog();

    // A fetch that takes longer can be stopped from the window.
    static constexpr std::chrono::seconds PatientTime{10};

    // From the log tool, which may take any time. No view is touched; not on the main thread.
    static platform::StyledText fetchLog(LogFetch& fetch);
    // From the log of systems that predate the unified one: the backup daemon's messages without styles.
    static platform::StyledText fetchASL();

    static platform::Color blueColor();
    static platform::Color greenColor();
    static platform::Color orangeColor();
    static platform::Color redColor();

private:
    BRVConsoleController();
    void loadWindow();
    void finishRefresh(const std::shared_ptr<LogFetch>& fetch, platform::ui::PreparedText text);
    void setFetching(bool fetching);
    void write(const platform::ui::SavePanel::Choice& choice);
    void presentError(const platform::Error& error);

    std::shared_ptr<platform::Queue> _exportQueue;
    std::unique_ptr<platform::ui::Interface> _interface;
    std::shared_ptr<platform::ui::TextView> _textView;
    std::shared_ptr<platform::ui::ProgressIndicator> _spinningIndicator;
    std::shared_ptr<platform::ui::Button> _refreshButton;
    std::shared_ptr<platform::ui::Button> _exportButton;
    std::shared_ptr<platform::ui::Button> _stopButton;
    std::shared_ptr<LogFetch> _fetch; // the one that runs; null when none does
    std::unique_ptr<platform::ClockTimer> _patience;
};
