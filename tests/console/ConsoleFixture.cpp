#include "tests/console/ConsoleFixture.h"

#include "diagnostics/log/ZRKLog.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/platform/ui/User.h"

#include <ctime>
#include <doctest/doctest.h>
#include <QApplication>

using namespace platform;
using namespace platform::ui;

namespace {

template <class T>
std::shared_ptr<T> outletOf(const BRVConsoleController& console, const char* identifier)
{
    REQUIRE(console.window());
    const auto* const widget = console.window()->native().window->findChild<QWidget*>(QLatin1String(identifier));
    REQUIRE(widget);
    const auto view = std::dynamic_pointer_cast<T>(viewForWidget(widget));
    REQUIRE(view);
    return view;
}

} // namespace

ConsoleFixture::ConsoleFixture()
{
    ::tzset();
    static const bool opened = [] {
        ZRKLogInit("com.zerkolin.brevane", "application");
        return true;
    }();
    static_cast<void>(opened);
    scripted::reset(); // after the log has told that this machine has no folder for its file
    console = BRVConsoleController::create();
}

void ConsoleFixture::show()
{
    console->showWindow();
    waitForFetch();
}

void ConsoleFixture::waitForFetch() const
{
    REQUIRE(user::runEventsUntil([this] { return !spinner()->isAnimating(); }, 20000));
}

std::shared_ptr<TextView> ConsoleFixture::textView() const
{
    return outletOf<TextView>(*console, "consoleTextView");
}

std::shared_ptr<ProgressIndicator> ConsoleFixture::spinner() const
{
    return outletOf<ProgressIndicator>(*console, "consoleSpinner");
}

std::shared_ptr<Button> ConsoleFixture::refreshButton() const
{
    return outletOf<Button>(*console, "consoleRefreshButton");
}

std::shared_ptr<Button> ConsoleFixture::exportButton() const
{
    return outletOf<Button>(*console, "consoleExportButton");
}

StyledText fetchedLog()
{
    LogFetch fetch;
    return BRVConsoleController::fetchLog(fetch);
}

std::shared_ptr<Button> ConsoleFixture::stopButton() const
{
    return outletOf<Button>(*console, "consoleStopButton");
}

void setToolOutput(const std::string& text)
{
    scripted::process::setOutput({text});
}

std::string record(std::string_view subsystem, std::string_view type, std::string_view message, std::string_view path)
{
    std::string text = R"({"timestamp":"2026-11-20 09:56:22.123456+0000","category":"c","processID":7)";
    const auto add = [&text](std::string_view key, std::string_view value) {
        text.append(",\"").append(key).append("\":\"").append(value).append("\"");
    };
    add("subsystem", subsystem);
    add("messageType", type);
    add("eventMessage", message);
    add("processImagePath", path);
    return text + "}";
}

std::string styled(const StyledText& text)
{
    std::string result;
    text.visitRuns(0, text.size(), [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
        char letter = '-';
        if (attributes.foreground == Color(NamedColor::Text))
            letter = 'p';
        else if (attributes.foreground == BRVConsoleController::blueColor())
            letter = 'b';
        else if (attributes.foreground == BRVConsoleController::greenColor())
            letter = 'g';
        else if (attributes.foreground == BRVConsoleController::orangeColor())
            letter = 'o';
        else if (attributes.foreground == BRVConsoleController::redColor())
            letter = 'r';
        result.append(1, letter).append("[").append(text.string(), begin, end - begin).append("]");
    });
    return result;
}

std::vector<std::string> loggedErrors()
{
    std::vector<std::string> texts;
    for (const auto& message : scripted::log::messages()) {
        if (message.type == LogLevelError)
            texts.push_back(message.text);
    }
    return texts;
}
