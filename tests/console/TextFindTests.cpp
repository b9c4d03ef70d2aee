#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/Localization.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <map>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
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

TEST_CASE(
    "a word is found from the end up while it is typed, on up with Return, down with Shift, and from the other end")
{
    //                0123456789012345678901234567
    Finding finding("a Backup, a backup, a BACKUP\n");
    CHECK(finding.type("backup") == 22);
    CHECK(finding.view.area().selectedText() == "BACKUP");
    CHECK(finding.enter() == 12);
    CHECK(finding.enter() == 2);
    CHECK(finding.enter() == 22);
    CHECK(finding.enter(Qt::ShiftModifier) == 2);
    CHECK(finding.enter(Qt::ShiftModifier) == 12);
    QTest::keySequence(&finding.view, QKeySequence::FindNext);
    CHECK(finding.outcome() == 22);
    QTest::keySequence(&finding.view, QKeySequence::FindPrevious);
    CHECK(finding.outcome() == 12);
}

TEST_CASE("a search starts at what is in sight, and what is typed further goes on from there")
{
    std::string text;
    for (int line = 0; line < 1000; ++line)
        text += "line " + std::to_string(line) + (line % 2 == 0 ? " even\n" : " odd\n");
    Finding finding(text);
    auto& area = finding.view.area();
    const auto placeOf = [&text](int line) {
        return static_cast<long>(text.find("line " + std::to_string(line) + " "));
    };
    area.scrollToEnd();
    CHECK(finding.type("even") == placeOf(998) + 9);
    CHECK(finding.type("line 5") < placeOf(600)); // the last one that begins so is line 599
    CHECK(area.selectedText() == "line 5");
    area.select(0, 0);
    area.verticalScrollBar()->setValue(500);
    const auto sight = area.stretchInSight();
    const auto found = finding.type("odd");
    CHECK(found >= static_cast<long>(sight.begin));
    CHECK(found < static_cast<long>(sight.end));
    CHECK(text.substr(static_cast<std::size_t>(found), sight.end - static_cast<std::size_t>(found)).find("odd", 1)
          == std::string::npos);
    // Scrolled away from what was found, the search is where the eyes are.
    area.verticalScrollBar()->setValue(100);
    const auto there = finding.type("even");
    CHECK(there >= static_cast<long>(area.stretchInSight().begin));
    CHECK(there < static_cast<long>(area.stretchInSight().end));
    CHECK(area.verticalScrollBar()->value() == 100);
}

TEST_CASE("a longer word is looked for from where the shorter one was")
{
    //                0123456789012345
    Finding finding("backup back bake\n");
    CHECK(finding.type("ba") == 12);
    QTest::keyClicks(&finding.field(), QStringLiteral("c"));
    CHECK(finding.outcome() == 7);
    QTest::keyClick(&finding.field(), Qt::Key_Backspace);
    CHECK(finding.outcome() == 12);
}

TEST_CASE("what is found stands out from the ground and its text from it, until something else is selected")
{
    Finding finding("a word in a text\n");
    auto& area = finding.view.area();
    CHECK(finding.type("word") == 2);
    const auto coloursOf = [&area](std::size_t offset) {
        const auto rect = area.characterRect(offset);
        const auto image = area.viewport()->grab(rect).toImage();
        std::map<QRgb, int> counts;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                ++counts[image.pixel(x, y)];
        }
        return QColor(std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first);
    };
    const auto ground = area.palette().color(QPalette::Base);
    CHECK(area.showsMatch());
    const auto match = coloursOf(3);
    CHECK(contrast(match, ground) >= 3);
    CHECK(coloursOf(7) == ground);
    area.select(2, 6);
    CHECK(area.showsMatch()); // the same again
    area.select(2, 5);
    CHECK_FALSE(area.showsMatch());
    CHECK(coloursOf(3) != match);
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
    CHECK(finding.type("caf\u00e9") == static_cast<long>(text.find("caf\u00e9")));
    CHECK(finding.enter() == static_cast<long>(text.find("CAF")));
    CHECK(finding.type("\u00e4r") == 0);
    CHECK(finding.type("\u00fcber") == -1);
}

TEST_CASE("overlapping matches are found one after another")
{
    Finding finding("aaaa\n");
    CHECK(finding.type("aa") == 2);
    for (const std::size_t place : {1U, 0U, 2U}) {
        QTest::keyClick(&finding.field(), Qt::Key_Return);
        CHECK(finding.view.area().selection().begin == place);
    }
    QTest::keyClick(&finding.field(), Qt::Key_Return, Qt::ShiftModifier);
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
