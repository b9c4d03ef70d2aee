#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "tests/console/ConsoleFixture.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ui/User.h"

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
