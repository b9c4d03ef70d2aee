#pragma once

#include "diagnostics/console/BRVConsoleController.h"
#include "tests/support/EnvironmentVariable.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A console on the scripted system, in a locale and a time zone that tests know.
class ConsoleFixture {
public:
    ConsoleFixture();

    // Waits until no fetch runs any more.
    void waitForFetch() const;
    void show();

    std::shared_ptr<platform::ui::TextView> textView() const;
    std::shared_ptr<platform::ui::ProgressIndicator> spinner() const;
    std::shared_ptr<platform::ui::Button> refreshButton() const;
    std::shared_ptr<platform::ui::Button> exportButton() const;
    std::shared_ptr<platform::ui::Button> stopButton() const;
    const std::string& string() const { return textView()->textStorage()->string(); }

    std::shared_ptr<BRVConsoleController> console;

private:
    EnvironmentVariable _locale{"LC_ALL", "C"};
    EnvironmentVariable _timeZone{"TZ", "UTC"};
};

// What a fetch of its own makes of the log tool's output.
platform::StyledText fetchedLog();

// Makes the log tool print this.
void setToolOutput(const std::string& text);

// One record of the log tool's, as it prints them.
std::string record(std::string_view subsystem, std::string_view type, std::string_view message,
                   std::string_view path = "/usr/bin/brevane");

// The text with each stretch of one colour in brackets behind the colour's letter: "p[date ]b[sender]".
std::string styled(const platform::StyledText& text);

// The error messages that reached the system's log.
std::vector<std::string> loggedErrors();
