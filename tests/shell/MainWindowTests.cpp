#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/WindowWatch.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTest>
#include <string>
#include <vector>

namespace {

std::string focusedControl()
{
    const auto* const focused = QApplication::focusWidget();
    return focused ? focused->objectName().toStdString() : "";
}

} // namespace

TEST_CASE("the main window is shown when it is filled")
{
    int shown = 0;
    const WindowWatch watch("mainWindow", [&shown](const QWidget& window) {
        ++shown;
        const auto* const backups = window.findChild<QCheckBox*>("backupsCheckBox");
        REQUIRE(backups);
        CHECK(backups->isChecked());
        const auto* const interval = window.findChild<QLineEdit*>("intervalField");
        REQUIRE(interval);
        CHECK(interval->text().toStdString() == "90");
    });
    const EditorTest editor(completeRecord());
    CHECK(shown == 1);
}

TEST_CASE("the main window is put in the middle of the screen, with the size that its rows take")
{
    setUp({});
    const PlayedScheduler scheduler(completeRecord());
    const auto controller = BREditorController::create();
    QWidget& window = windowNamed("mainWindow");
    window.move(1, 2);
    user::launch(controller);
    user::runEvents();
    CHECK(distanceFromCenter(window) < 20); // the frame comes when it is shown
    CHECK(window.height() >= window.minimumSizeHint().height());
}

TEST_CASE("Tab goes from one row to the next, also to rows that came later than those below them")
{
    EditorTest editor(completeRecord());
    editor.user.choose("operationModePopUp", 0);
    editor.user.choose("operationModePopUp", 1);
    editor.user.click("advancedSettingsButton");
    QWidget& window = windowNamed("mainWindow");
    window.activateWindow();
    window.findChild<QWidget*>("backupsCheckBox")->setFocus();
    // Those at the edges of the rows. A picker of times takes Tab twice, for the hour and the minute.
    const std::vector<std::string> expected{"backupsCheckBox",    "operationModePopUp",  "intervalField",
                                            "intervalUnitsPopUp", "suspendCheckBox",     "suspendFromPicker",
                                            "suspendToPicker",    "allowBatteryCheckBox"};
    std::vector<std::string> visited;
    for (int presses = 0; presses < 20 && focusedControl() != expected.back(); ++presses) {
        const std::string name = focusedControl();
        if (std::ranges::count(expected, name) == 1 && (visited.empty() || visited.back() != name))
            visited.push_back(name);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    visited.push_back(focusedControl());
    for (std::size_t i = 0; i < std::max(visited.size(), expected.size()); ++i)
        CHECK((i < visited.size() ? visited[i] : "") == (i < expected.size() ? expected[i] : ""));
}
