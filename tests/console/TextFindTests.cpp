#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/Localization.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

using namespace platform;
using namespace platform::ui;

namespace {

struct Finding {
    explicit Finding(const std::string& string)
    {
        auto text = std::make_shared<StyledText>();
        text->appendString(string, {});
        view.resize(500, 300);
        view.show();
        view.activateWindow();
        REQUIRE(QTest::qWaitForWindowActive(&view));
        view.area().setText(text);
        view.area().setFocus();
        QTest::keySequence(&view, QKeySequence::Find);
    }

    QLineEdit& field() { return *view.findChild<QLineEdit*>("findField"); }
    std::string notice() { return view.findChild<QLabel*>("findNotice")->text().toStdString(); }

    // Where the selection begins once it has changed or a notice shows; -1 for the notice.
    long outcome()
    {
        const auto before = view.area().selection().begin;
        static_cast<void>(
            QTest::qWaitFor([&] { return view.area().selection().begin != before || !notice().empty(); }, 200));
        return notice().empty() ? static_cast<long>(view.area().selection().begin) : -1;
    }
    long type(const char* word)
    {
        field().selectAll();
        for (const auto character : QString::fromUtf8(word))
            QTest::sendKeyEvent(QTest::Click, &field(), Qt::Key_unknown, QString(character), Qt::NoModifier);
        return outcome();
    }
    long enter(Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&field(), Qt::Key_Return, modifiers);
        return outcome();
    }

    StyledTextView view;
};

} // namespace

TEST_CASE("Ctrl+F opens a bar with the keyboard in it, Escape closes it and gives the keyboard back")
{
    Finding finding("text\n");
    CHECK(finding.field().isVisible());
    CHECK(finding.field().hasFocus());
    QTest::keyClick(&finding.field(), Qt::Key_Escape);
    CHECK_FALSE(finding.field().isVisible());
    CHECK(finding.view.area().hasFocus());
}

TEST_CASE("a word is found while it is typed, again with Return, before with Shift, and on from the other end")
{
    //                0123456789012345678901234567
    Finding finding("a Backup, a backup, a BACKUP\n");
    CHECK(finding.type("backup") == 2);
    CHECK(finding.view.area().selectedText() == "Backup");
    CHECK(finding.enter() == 12);
    CHECK(finding.enter() == 22);
    CHECK(finding.enter() == 2);
    CHECK(finding.enter(Qt::ShiftModifier) == 22);
    CHECK(finding.enter(Qt::ShiftModifier) == 12);
    QTest::keySequence(&finding.view, QKeySequence::FindNext);
    CHECK(finding.outcome() == 22);
    QTest::keySequence(&finding.view, QKeySequence::FindPrevious);
    CHECK(finding.outcome() == 12);
}

TEST_CASE("a word that is not there is told, and the notice goes with the next word")
{
    Finding finding("something\n");
    CHECK(finding.type("else") == -1);
    CHECK(finding.notice() == localizedString("Not Found"));
    CHECK(finding.type("thing") == 4);
    CHECK(finding.notice().empty());
    finding.field().clear();
    CHECK(finding.notice().empty());
}

TEST_CASE("letters beyond ASCII are found without regard to case, too")
{
    const std::string text = "\u00c4rger mit CAF\u00c9 und caf\u00e9\n";
    Finding finding(text);
    CHECK(finding.type("caf\u00e9") == static_cast<long>(text.find("CAF")));
    CHECK(finding.enter() == static_cast<long>(text.find("caf\u00e9")));
    CHECK(finding.type("\u00e4r") == 0);
    CHECK(finding.type("\u00fcber") == -1);
}

TEST_CASE("overlapping matches are found one after another")
{
    Finding finding("aaaa\n");
    CHECK(finding.type("aa") == 0);
    QTest::keyClick(&finding.field(), Qt::Key_Return);
    CHECK(finding.view.area().selection().begin == 1);
    QTest::keyClick(&finding.field(), Qt::Key_Return);
    CHECK(finding.view.area().selection().begin == 2);
    QTest::keyClick(&finding.field(), Qt::Key_Return);
    CHECK(finding.view.area().selection().begin == 0);
}

TEST_CASE("a match is found wherever it lies in a long text, also across the edges of what is searched at once")
{
    for (const std::size_t place : {0U, 5U, 65530U, 65533U, 65536U, 131071U, 300000U}) {
        for (const char* const word : {"needle", "n\u00e9\u00e9dle"}) {
            std::string text(400000, '.');
            text.replace(place, std::string(word).size(), word);
            Finding finding(text);
            CAPTURE(place);
            CAPTURE(word);
            finding.type(word);
            REQUIRE(QTest::qWaitFor([&] { return !finding.view.area().selection().isEmpty(); }, 5000));
            CHECK(finding.view.area().selection().begin == place);
            CHECK(finding.view.area().selectedText().toStdString() == word);
            CHECK_FALSE(finding.view.area().characterRect(place).isNull());
            finding.view.area().select(200000, 200000);
            QTest::keyClick(&finding.field(), Qt::Key_Return, Qt::ShiftModifier);
            REQUIRE(QTest::qWaitFor([&] { return !finding.view.area().selection().isEmpty(); }, 5000));
            CHECK(finding.view.area().selection().begin == place);
        }
    }
}

TEST_CASE("searching a very long text leaves the main thread free, and a new text ends the search")
{
    Finding finding(std::string(100000000, 'x'));
    QElapsedTimer time;
    time.start();
    QTest::keyClicks(&finding.field(), QStringLiteral("xy"));
    CHECK(time.elapsed() < 1000);
    finding.view.area().setText(std::make_shared<const StyledText>());
    QTest::qWait(100);
    CHECK(finding.notice().empty());
}

TEST_CASE("the bar's buttons have names")
{
    Finding finding("text text\n");
    QStringList names;
    for (const auto* const button : finding.view.findChildren<QToolButton*>()) {
        if (!button->accessibleName().isEmpty())
            names += button->accessibleName();
    }
    CHECK(names == QStringList{"Previous Match", "Next Match", "Close"});
    CHECK(finding.field().accessibleName() == "Find");
}
