#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/ui/Button.h"
#include "platform/ui/Interface.h"
#include "shell/menus/MainMenu.h"
#include "tests/platform/ui/User.h"

#include <algorithm>
#include <csignal>
#include <doctest/doctest.h>
#include <map>
#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QMenu>
#include <sys/wait.h>
#include <unistd.h>

using namespace platform::ui;

namespace {

constexpr std::array Names{"MainWindow", "BRVCalendarIntervalViewController", "BRVIntervalViewController",
                           "BRVWhenInactiveViewController", "BRVPreferencesController"};

// What a program that does this writes before it dies of an abort; empty when it lives.
template <class Deed>
std::string lastWords(const Deed& deed)
{
    int ends[2];
    REQUIRE(pipe(ends) == 0);
    const auto child = fork();
    if (child == 0) {
        signal(SIGABRT, SIG_DFL); // the test framework's handler would speak as well
        dup2(ends[1], STDERR_FILENO);
        deed();
        _exit(0);
    }
    close(ends[1]);
    std::string words(1000, '\0');
    words.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(ends[0], words.data(), words.size()))));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? words : "";
}

std::vector<QWidget*> controls(const QWidget& window)
{
    std::vector<QWidget*> found;
    for (auto* const widget : window.findChildren<QWidget*>()) {
        if (dynamic_cast<Control*>(viewForWidget(widget).get()))
            found.push_back(widget);
    }
    return found;
}

} // namespace

TEST_CASE("an outlet is the same view each time, of the class that its control has")
{
    const auto interface = Interface::load("MainWindow");
    CHECK(interface->outlet<CheckBox>("backupsCheckBox") == interface->outlet<View>("backupsCheckBox"));
    CHECK(interface->outlet<DatePicker>("suspendToPicker")->superview() == interface->outlet<View>("suspendStackView"));
    CHECK(interface->outlet<View>("contentView") == interface->window()->contentView());
    CHECK_FALSE(interface->outlet<View>("stackView")->isPlainContainer());
    CHECK(Interface::load("BRVIntervalViewController")->view()->isPlainContainer());
    CHECK_FALSE(Interface::load("BRVIntervalViewController")->window());
}

TEST_CASE("a missing outlet ends the process with its name")
{
    const auto interface = Interface::load("MainWindow");
    CHECK(lastWords([&] { interface->outlet<View>("noSuchOutlet"); }) == "Missing outlet: noSuchOutlet\n");
    CHECK(lastWords([&] { interface->outlet<Button>("backupsCheckBox"); }) == "Missing outlet: backupsCheckBox\n");
    CHECK(lastWords([&] { interface->menuItem("noSuchItem"); }) == "Missing outlet: noSuchItem\n");
    CHECK(lastWords([] { Interface::load("NoSuchInterface"); }) == "No interface of this name: NoSuchInterface\n");
    CHECK(lastWords([&] { interface->outlet<CheckBox>("backupsCheckBox"); }).empty());
}

TEST_CASE("assistive tools are told a name for every control")
{
    for (const auto* const name : Names) {
        const auto interface = Interface::load(name);
        const QWidget& top = interface->window() ? static_cast<QWidget&>(*interface->window()->native().window)
                                                 : *interface->view()->native().widget;
        for (auto* const widget : controls(top)) {
            CAPTURE(widget->objectName().toStdString());
            const auto spoken = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
            CHECK_FALSE(spoken.isEmpty());
            CHECK_FALSE(spoken.contains(u'&'));
        }
    }
}

TEST_CASE("no two things in the main window answer to the same letter")
{
    const auto interface = Interface::load("MainWindow", mainMenu(menuConvention()));
    auto& window = *interface->window()->native().window;
    std::map<QKeySequence, int> uses;
    for (const auto* const control : controls(window)) {
        if (const auto* const button = qobject_cast<const QAbstractButton*>(control))
            ++uses[QKeySequence::mnemonic(button->text())];
    }
    for (auto* const menu : window.findChildren<QMenu*>()) {
        ++uses[QKeySequence::mnemonic(menu->title())];
        std::map<QKeySequence, int> inMenu;
        for (auto* const action : menu->actions()) {
            if (!action->isSeparator())
                ++inMenu[QKeySequence::mnemonic(action->text())];
        }
        for (const auto& [letter, count] : inMenu) {
            CAPTURE(letter.toString().toStdString());
            CHECK(count == 1);
            CHECK_FALSE(letter.isEmpty());
        }
    }
    for (const auto& [letter, count] : uses) {
        CAPTURE(letter.toString().toStdString());
        CHECK(count == 1);
        CHECK_FALSE(letter.isEmpty());
    }
}

TEST_CASE("the advanced settings button keeps its letter when its title changes")
{
    const auto interface = Interface::load("MainWindow");
    const auto button = interface->outlet<Button>("advancedSettingsButton");
    const auto& widget = *button->native().as<QAbstractButton>();
    const auto letter = QKeySequence::mnemonic(widget.text());
    button->setTitle("Hide Advanced Settings");
    CHECK(QKeySequence::mnemonic(widget.text()) == letter);
}

TEST_CASE("a closed window can be shown again")
{
    const auto interface = Interface::load("MainWindow");
    const auto window = interface->window();
    CHECK_FALSE(window->isVisible());
    window->layoutIfNeeded();
    window->center();
    window->makeKeyAndOrderFront();
    CHECK(window->isVisible());
    window->close();
    CHECK_FALSE(window->isVisible());
    window->makeKeyAndOrderFront();
    CHECK(window->isVisible());
}

TEST_CASE("views outlive the interface that made them")
{
    auto interface = Interface::load("BRVIntervalViewController");
    const auto view = interface->view();
    const auto field = interface->outlet<TextField>("intervalField");
    interface.reset();
    field->setStringValue("5");
    CHECK(field->stringValue() == "5");
    CHECK(field->superview() == view);
}
