#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/ui/Button.h"
#include "platform/ui/Interface.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QBoxLayout>
#include <QTest>

using namespace platform::ui;

namespace {

// The main window with its rows in sight, in the order in which the interface file has them.
struct Shown {
    Shown()
    {
        auto& rows = *interface->outlet<View>("rowsOutOfSight")->native().widget;
        auto* const column = new QVBoxLayout(&rows);
        for (auto* const row : rows.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
            column->addWidget(row);
        // Above the buttons, as in use.
        static_cast<QBoxLayout*>(rows.parentWidget()->layout())->insertWidget(0, &rows);
        rows.show();
        window->layoutIfNeeded();
        window->setAutorecalculatesKeyViewLoop(true);
        window->makeKeyAndOrderFront();
        user::runEvents();
    }

    static std::string focused()
    {
        const auto* const widget = QApplication::focusWidget();
        return widget ? widget->objectName().toStdString() : "nothing";
    }

    std::unique_ptr<Interface> interface = Interface::load("MainWindow");
    std::shared_ptr<Window> window = interface->window();
};

} // namespace

TEST_CASE("the backups check box has the keyboard when the main window opens")
{
    const Shown shown;
    CHECK(Shown::focused() == "backupsCheckBox");
}

TEST_CASE("Tab visits the controls from top to bottom, and a control that moved at its new place")
{
    const Shown shown;
    for (const auto* const identifier :
         {"backupsCheckBox", "operationModePopUp", "suspendCheckBox", "suspendFromPicker", "suspendToPicker",
          "allowBatteryCheckBox", "dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
          "dontRunWhenNotNetworkWiredCheckBox", "snapshotsCheckBox", "advancedSettingsButton", "applyButton"}) {
        CHECK(Shown::focused() == identifier);
        // A picker's hour and minute are stops of their own.
        for (int stops = 0; stops < 3 && Shown::focused() == identifier; ++stops)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    CHECK(Shown::focused() == "backupsCheckBox");

    auto& snapshots = *shown.interface->outlet<View>("snapshotsCheckBox")->native().widget;
    static_cast<QBoxLayout*>(snapshots.parentWidget()->layout())->insertWidget(1, &snapshots);
    shown.window->layoutIfNeeded();
    QApplication::processEvents();
    shown.interface->outlet<View>("operationModePopUp")->native().widget->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    CHECK(Shown::focused() == "snapshotsCheckBox");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    CHECK(Shown::focused() == "operationModePopUp");
}

TEST_CASE("Return presses the Apply button wherever the keyboard is, unless on another button")
{
    const Shown shown;
    int applied = 0;
    shown.interface->outlet<Button>("applyButton")->setAction([&] { ++applied; });
    user::press(*shown.interface->outlet<View>("backupsCheckBox"), user::Key::Return);
    user::press(*shown.interface->outlet<View>("suspendFromPicker"), user::Key::Return);
    CHECK(applied == 2);
    user::press(*shown.interface->outlet<View>("advancedSettingsButton"), user::Key::Return);
    CHECK(applied == 2);
    shown.interface->outlet<Button>("applyButton")->setEnabled(false);
    user::press(*shown.interface->outlet<View>("backupsCheckBox"), user::Key::Return);
    CHECK(applied == 2);
}

TEST_CASE("the default button stays the default one when the keyboard was on it")
{
    const Shown shown;
    int applied = 0;
    shown.interface->outlet<Button>("applyButton")->setAction([&] { ++applied; });
    shown.interface->outlet<View>("applyButton")->native().widget->setFocus();
    shown.interface->outlet<View>("backupsCheckBox")->native().widget->setFocus();
    user::press(*shown.interface->outlet<View>("backupsCheckBox"), user::Key::Return);
    CHECK(applied == 1);
}

TEST_CASE("Escape presses the button that answers it, if there is one that can be pressed")
{
    const auto interface = Interface::load("BRVFirstStartController");
    const auto window = interface->window();
    const auto button = interface->outlet<Button>("notNowButton");
    int pressed = 0;
    button->setAction([&pressed] { ++pressed; });
    window->makeKeyAndOrderFront();
    user::runEvents();
    auto* const widget = window->native().window.get();
    QTest::keyClick(widget, Qt::Key_Escape);
    CHECK(pressed == 1);
    button->setEnabled(false);
    QTest::keyClick(widget, Qt::Key_Escape);
    button->setEnabled(true);
    button->setHidden(true);
    QTest::keyClick(widget, Qt::Key_Escape);
    CHECK(pressed == 1);

    const Shown other; // has none
    QTest::keyClick(other.window->native().window.get(), Qt::Key_Escape);
    CHECK(other.window->isVisible());
}

TEST_CASE("whoever closes a window, its handler runs while the window is still there")
{
    const auto window = Interface::load("BRVPreferencesController")->window();
    int closed = 0;
    window->setCloseHandler([&] { closed += window->isVisible() ? 1 : 100; });
    window->makeKeyAndOrderFront();
    user::runEvents();
    window->close();
    CHECK(closed == 1);
    window->makeKeyAndOrderFront();
    user::runEvents();
    window->native().window->QWidget::close(); // as by its frame
    CHECK(closed == 2);
    window->setCloseHandler(nullptr);
    window->makeKeyAndOrderFront();
    window->close();
    CHECK(closed == 2);
}

TEST_CASE("a window with a name comes up where it was last seen and as large, and another one as ever")
{
    const auto shownWindow = [](const char* name) {
        auto interface = Interface::load("BRVActivityController");
        interface->window()->center();
        if (*name)
            interface->window()->setFrameAutosaveName(name);
        interface->window()->makeKeyAndOrderFront();
        user::runEvents();
        return interface;
    };
    const auto frame = [](const Interface& interface) { return interface.window()->native().window->geometry(); };
    const auto first = shownWindow("Test");
    const QRect chosen(40, 60, 700, 540);
    CHECK(frame(*first) != chosen);
    first->window()->native().window->setGeometry(chosen);
    first->window()->close();
    user::runEvents();
    CHECK(frame(*shownWindow("Test")) == chosen);
    CHECK(frame(*shownWindow("Other")) != chosen);
    CHECK(frame(*shownWindow("")) != chosen);
}
