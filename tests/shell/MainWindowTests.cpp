#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/WindowWatch.h"

#include <doctest/doctest.h>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <string>

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
    user::runEvents(); // the rows take their places
    const auto afterTabIn = [&editor](const char* control) {
        editor.user.press(control, Key::Tab);
        const auto* const focused = windowNamed("mainWindow").focusWidget();
        return focused ? focused->objectName().toStdString() : "";
    };
    CHECK(afterTabIn("backupsCheckBox") == "operationModePopUp");
    CHECK(afterTabIn("operationModePopUp") == "intervalField");
    CHECK(afterTabIn("intervalUnitsPopUp") == "suspendCheckBox");
    CHECK(afterTabIn("suspendCheckBox") == "suspendFromPicker");
    CHECK(afterTabIn("allowBatteryCheckBox") == "dontRunWhenPassiveCheckBox");
}

TEST_CASE("Tab goes by the places of the controls, also from one that was added last and stands at the top")
{
    const EditorTest editor(completeRecord());
    QWidget& window = windowNamed("mainWindow");
    QPushButton added(&window);
    added.setGeometry(0, 0, 10, 10);
    added.show();
    added.setFocus();
    QTest::keyClick(&added, Qt::Key_Tab);
    REQUIRE(window.focusWidget());
    CHECK(window.focusWidget()->objectName().toStdString() == "backupsCheckBox");
}
