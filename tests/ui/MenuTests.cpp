#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/menus/MenuItemNative.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/ui/Interface.h"
#include "platform/ui/TextView.h"
#include "shell/menus/MainMenu.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QTest>

using namespace platform::ui;

TEST_CASE("choosing a menu item runs its action")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    const auto item = interface->menuItem("openWebSiteMenuItem");
    int actions = 0;
    item->setAction([&] { ++actions; });
    CHECK(item->title() == "Web Site");
    CHECK(item->identifier() == "openWebSiteMenuItem");
    user::click(*item);
    CHECK(actions == 1);
}

TEST_CASE("a menu item's validator is asked each time, for its menu and for its key")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    interface->window()->makeKeyAndOrderFront();
    auto& window = *interface->window()->native().window;
    const auto item = interface->menuItem("quitMenuItem");
    int actions = 0;
    bool valid = false;
    item->setAction([&] { ++actions; });
    item->setValidator([&] { return valid; });
    user::runEvents();

    CHECK_FALSE(item->isEnabled());
    CHECK_THROWS_AS(user::click(*item), std::logic_error);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    CHECK(actions == 0);
    valid = true;
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    CHECK(actions == 1);
    user::click(*item);
    CHECK(actions == 2);
}

TEST_CASE("a hidden menu item has no key")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    interface->window()->makeKeyAndOrderFront();
    user::runEvents();
    const auto item = interface->menuItem("localSnapshotsMenuItem");
    int actions = 0;
    item->setAction([&] { ++actions; });
    item->setHidden(true);
    CHECK(item->isHidden());
    CHECK(item->keyEquivalent() == "1");
    auto& window = *interface->window()->native().window;
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
    CHECK(actions == 0);
    item->setHidden(false);
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
    CHECK(actions == 1);
}

TEST_CASE("a key equivalent is one character, of which a capital needs the shift key")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    const auto item = interface->menuItem("aboutMenuItem");
    CHECK(item->keyEquivalent().empty());
    for (const auto* const key : {"1", "w", "W", ",", ""}) {
        item->setKeyEquivalent(key);
        CHECK(item->keyEquivalent() == key);
    }
}

TEST_CASE("the item that follows is found, hidden ones and separators included, to the menu's end")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    const auto separator = interface->menuItem("closeMenuItem")->next();
    REQUIRE(separator);
    CHECK(separator->title().empty());
    CHECK(separator->next()->identifier() == "mainWindowMenuItem");
    const auto snapshots = interface->menuItem("localSnapshotsMenuItem");
    snapshots->setHidden(true);
    CHECK(interface->menuItem("mainWindowMenuItem")->next()->identifier() == "localSnapshotsMenuItem");
    snapshots->next()->setKeyEquivalent("1");
    CHECK(interface->menuItem("consoleMenuItem")->keyEquivalent() == "1");
    CHECK_FALSE(interface->menuItem("quitMenuItem")->next());
}

TEST_CASE("every item found for the same place in the menu shares its action")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    int actions = 0;
    interface->menuItem("openWebSiteMenuItem")->next()->setAction([&] { ++actions; });
    user::click(*interface->menuItem("contactByMailMenuItem"));
    CHECK(actions == 1);
}

TEST_CASE("the Edit menu acts on the field that has the keyboard")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    auto& window = *interface->window()->native().window;
    auto* const line = new QLineEdit(window.centralWidget());
    interface->window()->makeKeyAndOrderFront();
    user::runEvents();
    line->setText("ninety");
    line->setFocus();
    REQUIRE(QApplication::focusWidget() == line);
    user::click(*interface->menuItem("selectAllMenuItem"));
    CHECK(line->selectedText() == "ninety");
    user::click(*interface->menuItem("cutMenuItem"));
    CHECK(line->text().isEmpty());
    CHECK(QApplication::clipboard()->text() == "ninety");
    user::click(*interface->menuItem("undoMenuItem"));
    CHECK(line->text() == "ninety");
    user::click(*interface->menuItem("redoMenuItem"));
    CHECK(line->text().isEmpty());
    user::click(*interface->menuItem("pasteMenuItem"));
    CHECK(line->text() == "ninety");
    user::click(*interface->menuItem("selectAllMenuItem"));
    user::click(*interface->menuItem("copyMenuItem"));
    CHECK(line->selectedText() == "ninety");

    line->clearFocus();
    CHECK_THROWS_AS(user::click(*interface->menuItem("pasteMenuItem")), std::logic_error);
}

TEST_CASE("an item of the Edit menu is there only when it has something to do")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    auto& window = *interface->window()->native().window;
    auto* const line = new QLineEdit(window.centralWidget());
    interface->window()->makeKeyAndOrderFront();
    user::runEvents();
    line->setFocus();
    QApplication::clipboard()->clear();
    const auto choosable = [&] {
        std::vector<std::string> names;
        for (const char* const name : {"undo", "redo", "cut", "copy", "paste", "selectAll"}) {
            try {
                user::click(*interface->menuItem(std::string(name) + "MenuItem"));
                names.emplace_back(name);
                break;                          // it may have changed what the others find
            } catch (const std::logic_error&) { // disabled
            }
        }
        return names.empty() ? "" : names.front();
    };
    CHECK(choosable().empty());
    line->setText("a");
    CHECK(choosable() == "selectAll");
    CHECK(choosable() == "cut");
    CHECK(choosable() == "undo");
    line->setReadOnly(true);
    line->selectAll();
    CHECK(choosable() == "copy");
    QApplication::clipboard()->setText("b");
    line->setReadOnly(false);
    line->clear();
    line->setEchoMode(QLineEdit::Password);
    line->setText("secret");
    line->selectAll();
    CHECK_THROWS_AS(user::click(*interface->menuItem("copyMenuItem")), std::logic_error);
    CHECK_THROWS_AS(user::click(*interface->menuItem("cutMenuItem")), std::logic_error);
    user::click(*interface->menuItem("pasteMenuItem"));
    CHECK(line->text() == "b");
}

TEST_CASE("the Edit menu copies from a text that cannot be edited, also in another window")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    interface->window()->makeKeyAndOrderFront();
    QMainWindow other;
    auto* const plain = new QPlainTextEdit(QStringLiteral("one\ntwo"));
    plain->setReadOnly(true);
    other.setCentralWidget(plain);
    other.show();
    other.activateWindow();
    plain->setFocus();
    user::runEvents();
    REQUIRE(QApplication::focusWidget() == plain);
    user::click(*interface->menuItem("selectAllMenuItem"));
    user::click(*interface->menuItem("copyMenuItem"));
    CHECK(QApplication::clipboard()->text() == "one\ntwo");
    for (const char* const name : {"undoMenuItem", "redoMenuItem", "cutMenuItem", "pasteMenuItem"})
        CHECK_THROWS_AS(user::click(*interface->menuItem(name)), std::logic_error);
}

TEST_CASE("the Edit menu selects and copies in the log's text, and leaves it to itself otherwise")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    const auto console = Interface::load("BRVConsole");
    interface->window()->makeKeyAndOrderFront();
    console->window()->makeKeyAndOrderFront();
    auto& area = console->outlet<TextView>("consoleTextView")->native().as<StyledTextView>()->area();
    area.setFocus();
    user::runEvents();
    REQUIRE(QApplication::focusWidget() == &area);
    const auto check = [&](std::initializer_list<const char*> disabled) {
        for (const char* const name : disabled)
            CHECK_THROWS_AS(user::click(*interface->menuItem(name)), std::logic_error);
    };
    QApplication::clipboard()->setText("earlier");
    check({"selectAllMenuItem", "copyMenuItem"});
    auto text = std::make_shared<platform::StyledText>();
    text->appendString("one\ntwo\n", {});
    area.setText(text);
    check({"copyMenuItem", "undoMenuItem", "redoMenuItem", "cutMenuItem", "pasteMenuItem"});
    user::click(*interface->menuItem("selectAllMenuItem"));
    CHECK(area.selectedText() == "one\ntwo\n");
    user::click(*interface->menuItem("copyMenuItem"));
    CHECK(QApplication::clipboard()->text() == "one\ntwo\n");
}

TEST_CASE("the Window menu acts on the window that the user is in")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    const auto preferences = Interface::load("BRVPreferencesController");
    interface->window()->makeKeyAndOrderFront();
    preferences->window()->makeKeyAndOrderFront();
    user::runEvents();
    user::click(*interface->menuItem("minimiseMenuItem"));
    CHECK(user::isMinimised("preferencesWindow"));
    CHECK_FALSE(user::isMinimised("mainWindow"));
    preferences->window()->makeKeyAndOrderFront();
    user::runEvents();
    CHECK_FALSE(user::isMinimised("preferencesWindow"));
    user::click(*interface->menuItem("closeMenuItem"));
    CHECK_FALSE(preferences->window()->isVisible());
    CHECK(interface->window()->isVisible());
}
