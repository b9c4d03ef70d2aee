#include "platform/linux/system/texts/StringTable.h"
#include "platform/linux/ui/dialogs/AlertBox.h"
#include "protocol/ErrorCodes.h"
#include "tests/localization/Inspection.h"
#include "tests/pictures/Onlooker.h"
#include "tests/pictures/States.h"
#include "tests/platform/ScriptedBackgroundItem.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ui/AlertWatcher.h"
#include "tests/shell/support/EditorTest.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <functional>
#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>

// Every case here runs in each language and at each scale, in a process of its own whose environment says which.

using inspection::complaintsAbout;

namespace {

// An ordinary screen: at twice the scale a window has half of it.
constexpr QSize OrdinaryScreen{1920, 1080};

QMainWindow& mainWindow()
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<QMainWindow*>(widget))
            return *window;
    }
    throw std::logic_error("There is no main window");
}

void checkNothingIsWrongNow(const QWidget& window)
{
    for (const std::string& complaint : complaintsAbout(window))
        FAIL_CHECK(complaint);
    const auto available = OrdinaryScreen / window.devicePixelRatioF();
    CHECK(window.width() <= available.width());
    CHECK(window.height() <= available.height());
}

void checkNothingIsWrong(const QWidget& window)
{
    user::runEvents();
    checkNothingIsWrongNow(window);
}

// The letters that Alt presses; a title in which one is marked twice or that was met before is complained of.
class Letters {
public:
    void add(const QString& title)
    {
        const auto place = title.indexOf(u'&');
        if (place < 0 || place + 1 == title.size())
            return;
        CAPTURE(title.toStdString());
        CHECK_FALSE(_letters.contains(title[place + 1], Qt::CaseInsensitive));
        _letters += title[place + 1];
    }

private:
    QString _letters;
};

void checkLetters(const QWidget& window)
{
    Letters letters;
    if (const auto* const mainWindow = qobject_cast<const QMainWindow*>(&window);
        mainWindow && mainWindow->menuWidget()) {
        for (const auto* const action : mainWindow->menuWidget()->actions())
            letters.add(action->text());
    }
    for (const auto* const button : window.findChildren<QAbstractButton*>()) {
        if (button->isVisible() && button->window() == &window)
            letters.add(button->text());
    }
    for (const auto* const label : window.findChildren<QLabel*>()) {
        if (label->isVisible() && label->buddy())
            letters.add(label->text());
    }
}

// The main window in each state that a person can bring it into.
void forEachState(const std::function<void(EditorTest&)>& look)
{
    for (const char* mode : {"WhenInactive", "Interval", "CalendarIntervals"}) {
        CAPTURE(mode);
        EditorTest editor(completeRecordWith("BackupsMode", mode));
        look(editor);
        editor.user.click("advancedSettingsButton");
        look(editor);
        editor.user.click("backupsCheckBox");
        look(editor);
        editor.user.click("backupsCheckBox");
        look(editor);
    }
}

class RightToLeft {
public:
    RightToLeft() { QApplication::setLayoutDirection(Qt::RightToLeft); }
    ~RightToLeft() { QApplication::setLayoutDirection(Qt::LeftToRight); }
    RightToLeft(const RightToLeft&) = delete;
    RightToLeft& operator=(const RightToLeft&) = delete;
};

platform::Error messagerError(std::int64_t code)
{
    return {ZRKMessagerErrorDomain, code, {{"message", 2}, {"service", "com.zerkolin.brevane.scheduler"}}, nullptr};
}

void lookAtSheet()
{
    user::runEvents();
    const auto* const box = user::AlertWatcher::front();
    REQUIRE(box);
    CAPTURE(box->text().toStdString());
    CAPTURE(box->informativeText().toStdString());
    checkNothingIsWrong(*box);
}

// Complains of whatever is wrong with what it is shown.
class Critic : public Onlooker {
public:
    int seen = 0;

protected:
    void see(QWidget& window, QWidget* sheet) override
    {
        ++seen;
        const QWidget& front = sheet ? *sheet : window;
        checkNothingIsWrongNow(front);
        checkLetters(front);
    }
};

void checkEveryState()
{
    for (const State& state : states()) {
        CAPTURE(state.name);
        Critic critic;
        state.show(critic);
        CHECK(critic.seen == 1);
        user::runEvents();
    }
}

// Each way in which the scheduler helper may be out of reach.
void forEachDiagnosis(const std::function<void(std::int64_t)>& show)
{
    using enum platform::BackgroundItemStatus;
    SUBCASE("not installed")
    {
        scripted::system::removeFile("/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist");
        show(ZRKMessagerErrorServiceUnavailable);
    }
    SUBCASE("awaiting approval")
    {
        scripted::background::setStatus(RequiresApproval);
        show(ZRKMessagerErrorServiceUnavailable);
    }
    SUBCASE("disabled")
    {
        scripted::background::setStatus(Enabled);
        show(ZRKMessagerErrorServiceUnavailable);
    }
    SUBCASE("gone while it should answer")
    {
        show(ZRKMessagerErrorServiceDisappeared);
    }
}

} // namespace

TEST_CASE("the main window speaks the user's language")
{
    const EditorTest editor(completeRecord());
    const auto& table = platform::StringTable::shared();
    const char* expected = std::getenv("BREVANE_EXPECTED_LANGUAGE");
    CHECK(table.language() == (expected ? expected : "en"));
    CHECK(mainWindow().findChild<QWidget*>(QStringLiteral("applyButton"))->property("text").toString().toStdString()
          == table.stringForKey("&Apply"));
    CHECK(editor.user.itemTitles("operationModePopUp")
          == std::vector{table.stringForKey("When Inactive"), table.stringForKey("Interval"),
                         table.stringForKey("Times of Day")});
    CHECK(mainWindow().findChild<QMenu*>(QStringLiteral("helpMenu"))->title().toStdString()
          == table.stringForKey("&Help"));
}

TEST_CASE("the toolkit's own texts are in the same language")
{
    if (platform::StringTable::shared().language() == "en")
        return;
    const auto undo = QCoreApplication::translate("QLineEdit", "&Undo");
    if (undo == QStringLiteral("&Undo"))
        MESSAGE("SKIPPED: the toolkit's translations are not installed");
    else
        CHECK(QCoreApplication::translate("QLineEdit", "Select All") != QStringLiteral("Select All"));
}

TEST_CASE("nothing in the main window is cut off or in the way, in any state")
{
    forEachState([](EditorTest&) { checkNothingIsWrong(mainWindow()); });
}

TEST_CASE("a window that was opened small grows for what is shown later")
{
    EditorTest editor(completeRecordWith("Backups", false));
    user::runEvents();
    mainWindow().resize(1, 1);
    user::runEvents();
    editor.user.click("backupsCheckBox");
    editor.user.click("advancedSettingsButton");
    checkNothingIsWrong(mainWindow());
}

TEST_CASE("the units of the interval fit for one and for many")
{
    EditorTest editor(completeRecord());
    for (const char* count : {"1", "999", "2"}) {
        editor.user.replaceText("intervalField", count);
        for (int unit = 0; unit < 4; ++unit) {
            editor.user.choose("intervalUnitsPopUp", unit);
            CAPTURE(count);
            CAPTURE(unit);
            checkNothingIsWrong(mainWindow());
        }
    }
}

TEST_CASE("the retitled button keeps a letter for Alt")
{
    EditorTest editor(completeRecord());
    const auto* const button = mainWindow().findChild<QWidget*>(QStringLiteral("advancedSettingsButton"));
    for (int i = 0; i < 3; ++i) {
        CHECK(button->property("text").toString().contains(u'&'));
        editor.user.click("advancedSettingsButton");
    }
}

TEST_CASE("from right to left the main window is its own mirror image")
{
    std::vector<std::map<QString, QRect>> straight;
    std::vector<int> widths;
    forEachState([&](EditorTest&) {
        user::runEvents();
        straight.push_back(inspection::frames(mainWindow()));
        widths.push_back(mainWindow().width());
    });
    const RightToLeft direction;
    std::size_t state = 0;
    forEachState([&](EditorTest&) {
        CAPTURE(state);
        checkNothingIsWrong(mainWindow());
        CHECK(mainWindow().width() == widths[state]);
        const auto frames = inspection::frames(mainWindow());
        CHECK(frames.size() == straight[state].size());
        for (const auto& [name, frame] : straight[state]) {
            CAPTURE(name.toStdString());
            REQUIRE(frames.contains(name));
            CHECK(frames.at(name) == inspection::mirrored(frame, widths[state]));
        }
        ++state;
    });
}

TEST_CASE("the menus fit on the screen and their letters are told apart")
{
    const EditorTest editor(completeRecord());
    for (auto* const action : mainWindow().menuBar()->actions()) {
        auto* const menu = action->menu();
        REQUIRE(menu);
        CHECK(menu->sizeHint().width() <= OrdinaryScreen.width() / menu->devicePixelRatioF());
        Letters letters;
        for (const auto* const item : menu->actions()) {
            if (!item->isSeparator())
                letters.add(item->text());
        }
    }
}

TEST_CASE("no diagnosis on a sheet is cut off")
{
    EditorTest editor(completeRecord());
    const std::string title = platform::StringTable::shared().stringForKey("Failed to apply settings.");
    forEachDiagnosis([&](std::int64_t code) {
        editor.controller->displayAlertWithTitle(title, messagerError(code), true);
        lookAtSheet();
    });
}

TEST_CASE("nothing is cut off in any window or alert, and each letter for Alt has one meaning there")
{
    checkEveryState();
}

TEST_CASE("the same holds from right to left")
{
    const RightToLeft direction;
    checkEveryState();
}

TEST_CASE("alerts read from right to left as well")
{
    const RightToLeft direction;
    EditorTest editor(completeRecord());
    forEachDiagnosis([&](std::int64_t code) {
        editor.controller->displayAlertWithTitle("Brevane", messagerError(code), true);
        lookAtSheet();
    });
}
