#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "tests/console/ConsoleFixture.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ui/User.h"

#include <cerrno>
#include <chrono>
#include <doctest/doctest.h>
#include <QScrollBar>

using namespace platform;
namespace process = scripted::process;

namespace {

std::string manyRecords(int count)
{
    std::string output = "[";
    for (int number = 0; number < count; ++number)
        output += (number ? "," : "") + record("com.zerkolin.brevane", "Default", "message " + std::to_string(number));
    return output + "]";
}

std::string placeholder(const ConsoleFixture& fixture)
{
    return fixture.textView()->native().as<ui::StyledTextView>()->area().placeholder().toStdString();
}

bool isAtEnd(const ui::TextView& view)
{
    const auto& bar = *view.native().as<ui::StyledTextView>()->area().verticalScrollBar();
    return bar.maximum() > 0 && bar.value() == bar.maximum();
}

} // namespace

TEST_CASE("opening the console fetches the log and shows its end")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(500));
    fixture.show();
    CHECK(fixture.console->window()->isVisible());
    CHECK(fixture.console->window()->identifier() == "consoleWindow");
    CHECK(fixture.string().ends_with("brevane message 499\n"));
    CHECK(isAtEnd(*fixture.textView()));
    CHECK(process::starts().size() == 1);
}

TEST_CASE("while a fetch runs the indicator turns and both buttons are disabled")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(1));
    process::hold();
    fixture.console->showWindow();
    CHECK(fixture.spinner()->isAnimating());
    CHECK_FALSE(fixture.refreshButton()->isEnabled());
    CHECK_FALSE(fixture.exportButton()->isEnabled());
    CHECK_THROWS_AS(user::click(*fixture.refreshButton()), std::logic_error);
    fixture.console->refresh(); // not by the button either
    process::letGo();
    fixture.waitForFetch();
    CHECK(fixture.refreshButton()->isEnabled());
    CHECK(fixture.exportButton()->isEnabled());
    CHECK(process::starts().size() == 1);
}

TEST_CASE("refreshing replaces the whole text, also by an empty one")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(3));
    fixture.show();
    CHECK(fixture.string().find("message 2\n") != std::string::npos);
    setToolOutput(manyRecords(1));
    user::click(*fixture.refreshButton());
    fixture.waitForFetch();
    CHECK(fixture.string().find("message 0\n") != std::string::npos);
    CHECK(fixture.string().find("message 2\n") == std::string::npos);
    setToolOutput("nonsense");
    user::click(*fixture.refreshButton());
    fixture.waitForFetch();
    CHECK(fixture.string().empty());
    CHECK(fixture.refreshButton()->isEnabled());
    CHECK(fixture.exportButton()->isEnabled());
    CHECK(process::starts().size() == 3);
}

TEST_CASE("an empty window says that there are no messages, or why")
{
    ConsoleFixture fixture;
    setToolOutput("[]");
    fixture.show();
    CHECK(placeholder(fixture) == "No messages.");
    const auto afterRefresh = [&fixture] {
        user::click(*fixture.refreshButton());
        fixture.waitForFetch();
        CHECK(fixture.string().empty());
        return placeholder(fixture);
    };
    setToolOutput(""); // as the tool does that may not read the log
    CHECK(afterRefresh() == "The log could not be read.\nThis account may not be allowed to read it.");
    setToolOutput("[{");
    CHECK(afterRefresh() == "The log could not be read.\nThe data is not valid JSON. (It ends early.)");
    process::failToStart(EMFILE);
    CHECK(afterRefresh() == "The log could not be read.");
    process::failToStart(0);
    setToolOutput("[]");
    CHECK(afterRefresh() == "No messages.");
    scripted::system::setOperatingSystemVersion({10, 11, 6});
    CHECK(afterRefresh() == "No messages.");
}

TEST_CASE("a fetch that takes longer than ten seconds can be stopped, which leaves the text and kills the tool")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(2));
    fixture.show();
    CHECK(fixture.stopButton()->isHidden());
    const auto before = fixture.string();
    process::hold();
    process::ignoreKill(); // its end takes as long as it likes
    user::click(*fixture.refreshButton());
    scripted::clock::advance(std::chrono::milliseconds(9999));
    user::runEvents();
    CHECK(fixture.stopButton()->isHidden());
    scripted::clock::advance(std::chrono::milliseconds(1));
    user::runEvents();
    REQUIRE_FALSE(fixture.stopButton()->isHidden());
    user::click(*fixture.stopButton());
    CHECK_FALSE(fixture.spinner()->isAnimating());
    CHECK(fixture.stopButton()->isHidden());
    CHECK(fixture.refreshButton()->isEnabled());
    CHECK(fixture.exportButton()->isEnabled());
    CHECK(process::kills() == 1);
    CHECK(fixture.string() == before);
    // What it had still to say does not come, nor is its end told as a failure.
    process::letGo();
    CHECK(user::runEventsUntil([] { return process::waitedFor() == 2; }, 10000));
    user::runEvents();
    CHECK(fixture.string() == before);
    CHECK(loggedErrors().empty());
    // The next one is as usual.
    setToolOutput(manyRecords(3));
    user::click(*fixture.refreshButton());
    fixture.waitForFetch();
    CHECK(fixture.string().find("message 2\n") != std::string::npos);
    scripted::clock::advance(std::chrono::seconds(100));
    user::runEvents();
    CHECK(fixture.stopButton()->isHidden());
}

TEST_CASE("a first fetch that was stopped leaves a window that says so")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(2));
    process::hold();
    fixture.console->showWindow();
    fixture.console->stopFetch();
    CHECK(fixture.string().empty());
    CHECK(placeholder(fixture) == "The log was not read to its end.");
    CHECK(user::runEventsUntil([] { return process::waitedFor() == 1; }, 10000));
    fixture.console->stopFetch(); // nothing to stop
    CHECK(process::kills() <= 1);
}

TEST_CASE("asking again only brings the window forward")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(1));
    fixture.show();
    const auto window = fixture.console->window();
    window->close();
    CHECK_FALSE(window->isVisible());
    fixture.console->showWindow();
    CHECK(fixture.console->window() == window);
    CHECK(window->isVisible());
    CHECK(process::starts().size() == 1);
    CHECK_FALSE(fixture.string().empty());
}

TEST_CASE("closing the window while a fetch runs is safe, and the text is there when it is opened again")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(2));
    process::hold();
    fixture.console->showWindow();
    fixture.console->window()->close();
    process::letGo();
    fixture.waitForFetch();
    fixture.console->showWindow();
    CHECK(fixture.string().find("message 1\n") != std::string::npos);
}

TEST_CASE("a console that goes while a fetch runs leaves nothing behind that harms")
{
    ConsoleFixture fixture;
    setToolOutput(manyRecords(2));
    process::hold();
    fixture.console->showWindow();
    const std::weak_ptr<BRVConsoleController> weak = fixture.console;
    fixture.console.reset();
    CHECK(weak.expired());
    process::letGo();
    CHECK(user::runEventsUntil([] { return process::waitedFor() == 1; }, 10000));
    user::runEvents();
}

TEST_CASE("a selection keeps the colours of its lines")
{
    ConsoleFixture fixture;
    setToolOutput("[" + record("com.zerkolin.brevane", "Error", "red") + "]");
    fixture.show();
    auto& area = fixture.textView()->native().as<ui::StyledTextView>()->area();
    const auto picture = [&area] { return area.viewport()->grab().toImage(); };
    const auto isReddish = [](QRgb pixel) {
        return qRed(pixel) > qGreen(pixel) + 60 && qRed(pixel) > qBlue(pixel) + 60;
    };
    const auto count = [](const QImage& image, const auto& wanted) {
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                pixels += wanted(image.pixel(x, y));
        }
        return pixels;
    };
    const auto before = picture();
    area.selectAll();
    const auto after = picture();
    const auto background = before.pixel(before.width() - 5, before.height() - 5);
    CHECK(count(before, isReddish) > 10);
    CHECK(count(after, isReddish) > 10);
    CHECK(count(after, [background](QRgb pixel) { return pixel == background; })
          < count(before, [background](QRgb pixel) { return pixel == background; }));
}
