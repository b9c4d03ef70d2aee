#include "platform/linux/ui/controls/ViewNative.h"
#include "tests/macos/SolvedWindow.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/WindowWatch.h"

#include <cmath>
#include <doctest/doctest.h>
#include <QWidget>
#include <string>
#include <vector>

using platform::ui::View;

namespace {

std::shared_ptr<View> peerInMainWindow(std::string_view identifier)
{
    const auto name = QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    auto* const widget = windowNamed("mainWindow").findChild<QWidget*>(name);
    return widget ? platform::ui::viewForWidget(widget) : nullptr;
}

// The window of both editions, through the same states.
class BothWindows {
public:
    BothWindows() { compare(); }

    void compare()
    {
        user::runEvents();
        const double before = _solved.isSolved() ? _solved.height() : 0;
        _solved.solve();
        const auto stack = peerInMainWindow("stackView");
        const auto rows = editor.user.rows();
        for (const auto& row : rows) {
            INFO(row);
            REQUIRE(_solved.contains(row));
            const auto expected = peerInMainWindow(row)->frame();
            const auto frame = _solved.frame(row);
            CHECK(std::abs(frame.y - expected.y) <= 1);
            CHECK(std::abs(frame.height - expected.height) <= 1);
        }
        for (const auto& identifier : _solved.identifiers()) {
            INFO(identifier);
            CHECK(std::abs(_solved.compression(identifier)) < 1);
        }
        CHECK(std::abs(_solved.frame("stackView").height - stack->frame().height) <= 1);
        const int height = windowNamed("mainWindow").height();
        if (before > 0)
            CHECK(std::abs((_solved.height() - before) - (height - _heightOnLinux)) <= 1);
        _heightOnLinux = height;
        _heights.push_back(_solved.height());
    }

    const std::vector<double>& heights() const { return _heights; }

    EditorTest editor{completeRecord()};

private:
    SolvedWindow _solved{"MainWindow", peerInMainWindow};
    int _heightOnLinux = 0;
    std::vector<double> _heights;
};

} // namespace

TEST_CASE("the main window of macOS grows and shrinks with its rows as that of Linux does")
{
    BothWindows windows;
    auto& user = windows.editor.user;
    for (const bool advanced : {false, true}) {
        if (advanced)
            user.click("advancedSettingsButton");
        for (const int mode : {0, 1, 2, 1, 0}) {
            INFO("mode " << mode << ", advanced " << advanced);
            user.choose("operationModePopUp", mode);
            windows.compare();
        }
        for (const bool on : {false, true}) {
            user.tick("backupsCheckBox", on);
            windows.compare();
        }
    }
    user.click("advancedSettingsButton");
    windows.compare();
    CHECK(windows.heights().back() == windows.heights()[1]);
    CHECK(windows.heights()[2] < *std::ranges::max_element(windows.heights()));
}
