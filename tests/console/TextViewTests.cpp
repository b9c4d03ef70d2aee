#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/linux/ui/textlayout/TextStretchData.h"
#include "tests/support/ProcessorTime.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTest>

using namespace platform;
using namespace platform::ui;
using namespace std::chrono_literals;

namespace {

std::shared_ptr<const StyledText> textOf(const std::string& string)
{
    auto text = std::make_shared<StyledText>();
    text->appendString(string, {.font = TextFont::UserFixedPitch, .foreground = NamedColor::SystemGreen});
    return text;
}

std::string numberedLines(int count, const std::string& tail = "")
{
    std::string lines;
    for (int number = 0; number < count; ++number)
        lines += "line " + std::to_string(number) + tail + "\n";
    return lines;
}

struct ShownText {
    explicit ShownText(const std::string& string, QSize size = {500, 300})
    {
        view.resize(size);
        view.show();
        QApplication::processEvents();
        area.setText(textOf(string));
        area.setFocus();
    }

    int value() const { return area.verticalScrollBar()->value(); }
    int maximum() const { return area.verticalScrollBar()->maximum(); }
    std::string lineInSight() { return std::string(area.text()->line(area.linesInSight().first)); }
    std::string lastLineInSight() { return std::string(area.text()->line(area.linesInSight().second - 1)); }
    std::string selected() const { return area.selectedText().toStdString(); }
    QPoint middleOf(std::size_t offset) { return area.characterRect(offset).center(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&area, key, modifiers); }

    StyledTextView view;
    StyledTextArea& area = view.area();
};

} // namespace

TEST_CASE("a text of many lines is scrolled by lines, pages and to its ends by the keyboard")
{
    ShownText shown(numberedLines(1000));
    CHECK(shown.value() == 0);
    CHECK(shown.lineInSight() == "line 0\n");
    shown.press(Qt::Key_Down);
    CHECK(shown.lineInSight() == "line 1\n");
    shown.press(Qt::Key_Up);
    CHECK(shown.lineInSight() == "line 0\n");
    shown.press(Qt::Key_PageDown);
    CHECK(shown.value() == shown.area.verticalScrollBar()->pageStep());
    shown.press(Qt::Key_End);
    CHECK(shown.value() == shown.maximum());
    CHECK(shown.lastLineInSight() == "line 999\n");
    shown.press(Qt::Key_PageUp);
    shown.press(Qt::Key_Home);
    CHECK(shown.lineInSight() == "line 0\n");
}

TEST_CASE("wrapped lines are counted as they are laid out, and going up by rows meets every row")
{
    ShownText shown(numberedLines(300,
                                  " with words that have to be wrapped because they are many more than fit in a row, "
                                  "and a café with 日本語 and \U0001F600 besides"));
    shown.area.scrollToEnd();
    CHECK(shown.value() == shown.maximum());
    CHECK(shown.lastLineInSight().starts_with("line 299 "));
    std::size_t last = shown.area.linesInSight().first;
    for (int row = 0; row < 900; ++row) {
        shown.press(Qt::Key_Up);
        const auto now = shown.area.linesInSight().first;
        REQUIRE(now <= last);
        REQUIRE(last - now <= 1);
        last = now;
    }
}

TEST_CASE("jumping into the middle and back to the end shows the end")
{
    ShownText shown(numberedLines(5000, std::string(300, 'w') + " " + std::string(200, 'm')));
    for (const int part : {2, 3, 7}) {
        shown.area.verticalScrollBar()->setValue(shown.maximum() / part);
        shown.area.verticalScrollBar()->setValue(shown.maximum());
        CHECK(shown.value() == shown.maximum());
        CHECK(shown.lastLineInSight().starts_with("line 4999"));
    }
}

TEST_CASE("a narrower view keeps the line at the top, or the end if that was shown")
{
    ShownText shown(numberedLines(500, " some words for a row of its own, and more of them so that it wraps"));
    shown.area.verticalScrollBar()->setValue(200);
    const auto line = shown.lineInSight();
    shown.view.resize(300, 300);
    QApplication::processEvents();
    CHECK(shown.lineInSight() == line);
    shown.area.scrollToEnd();
    shown.view.resize(420, 350);
    QApplication::processEvents();
    CHECK(shown.value() == shown.maximum());
    CHECK(shown.lastLineInSight().starts_with("line 499 "));
}

TEST_CASE("a new text takes the place of the old one, which is given back, and nothing stays selected")
{
    ShownText shown("first\n");
    shown.area.selectAll();
    const auto earlier = shown.area.setText(textOf("second\n"));
    CHECK(earlier->string() == "first\n");
    CHECK(shown.area.text()->string() == "second\n");
    CHECK(shown.area.selection().isEmpty());
    shown.area.setText(textOf(""));
    shown.area.scrollToEnd();
    shown.press(Qt::Key_Down);
    shown.press(Qt::Key_End, Qt::ShiftModifier);
    CHECK(shown.area.offsetAt({10, 10}) == 0);
}

TEST_CASE("all of the text is selected and copied by the keyboard")
{
    ShownText shown("one\ncaf\u00e9 \U0001F600\n");
    QTest::keySequence(&shown.area, QKeySequence::SelectAll);
    QTest::keySequence(&shown.area, QKeySequence::Copy);
    CHECK(QApplication::clipboard()->text() == QString::fromUtf8("one\ncaf\u00e9 \U0001F600\n"));
    const auto* const data = QApplication::clipboard()->mimeData();
    CHECK(data->hasText());
    CHECK_FALSE(data->hasHtml());
}

TEST_CASE("nothing selected copies nothing")
{
    QApplication::clipboard()->setText("before");
    ShownText shown("one\n");
    shown.area.copy();
    CHECK(QApplication::clipboard()->text() == "before");
}

TEST_CASE("dragging selects characters, in both directions and across lines")
{
    ShownText shown("first line\nsecond line\nthird line\n");
    auto* const viewport = shown.area.viewport();
    const auto left = [&](std::size_t offset) {
        const auto rect = shown.area.characterRect(offset);
        return QPoint(rect.left() + 1, rect.center().y());
    };
    const auto drag = [&](std::size_t from, std::size_t to) {
        QTest::mousePress(viewport, Qt::LeftButton, {}, left(from));
        QMouseEvent move(QEvent::MouseMove, left(to), viewport->mapToGlobal(left(to)), Qt::NoButton, Qt::LeftButton,
                         {});
        QApplication::sendEvent(viewport, &move);
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, left(to));
    };
    drag(2, 7);
    CHECK(shown.selected() == "rst l");
    drag(7, 2);
    CHECK(shown.selected() == "rst l");
    drag(6, 13);
    CHECK(shown.selected() == "line\nse");
    QTest::mouseClick(viewport, Qt::LeftButton, {}, left(3));
    CHECK(shown.selected().empty());
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ShiftModifier, left(5));
    CHECK(shown.selected() == "st");
}

TEST_CASE("a double click selects a word, a third click the line")
{
    ShownText shown("first line\nsecond word here\n");
    auto* const viewport = shown.area.viewport();
    const auto place = shown.middleOf(20);
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, place);
    CHECK(shown.selected() == "word");
    QTest::mouseClick(viewport, Qt::LeftButton, {}, place);
    CHECK(shown.selected() == "second word here\n");
}

TEST_CASE("the keyboard extends a selection by characters, words, rows and to the ends")
{
    ShownText shown("one two\nthree \U0001F600!\nlast\n");
    const auto shift = Qt::ShiftModifier;
    const auto both = Qt::ShiftModifier | Qt::ControlModifier;
    shown.area.select(0, 0);
    shown.press(Qt::Key_Right, shift);
    CHECK(shown.selected() == "o");
    shown.press(Qt::Key_Right, both);
    CHECK(shown.selected() == "one ");
    shown.press(Qt::Key_End, shift);
    CHECK(shown.selected() == "one two");
    shown.press(Qt::Key_Right, shift);
    CHECK(shown.selected() == "one two\n");
    shown.press(Qt::Key_Left, shift);
    CHECK(shown.selected() == "one two");
    shown.press(Qt::Key_Down, shift);
    CHECK(shown.selected().starts_with("one two\nthree"));
    shown.press(Qt::Key_End, both);
    CHECK(shown.selected() == shown.area.text()->string());
    shown.press(Qt::Key_Home, both);
    CHECK(shown.selected().empty());
    const auto emoji = shown.area.text()->string().find("\U0001F600");
    shown.area.select(emoji, emoji);
    shown.press(Qt::Key_Right, shift);
    CHECK(shown.selected() == "\U0001F600");
}

TEST_CASE("every character is where a click finds it, in wrapped lines and beside wide characters")
{
    ShownText shown("ascii text\n\u65e5\u672c\u8a9e and caf\u00e9\n" + std::string(200, 'w') + "\nend\n");
    const auto& string = shown.area.text()->string();
    for (std::size_t offset = 0; offset < string.size(); ++offset) {
        if ((static_cast<unsigned char>(string[offset]) & 0xC0U) == 0x80 || string[offset] == '\n')
            continue;
        const auto rect = shown.area.characterRect(offset);
        REQUIRE_FALSE(rect.isNull());
        CAPTURE(offset);
        CHECK(shown.area.offsetAt({rect.left() + rect.width() / 4, rect.center().y()}) == offset);
    }
}

TEST_CASE("two million lines are taken, scrolled and resized in little time")
{
    auto text = std::make_shared<StyledText>();
    for (int number = 0; number < 2000000; ++number)
        text->appendString("a line\n", {});
    ShownText shown("");
    const auto check = [](const std::string& what, const auto& deed) {
        const ProcessorTime time;
        deed();
        CAPTURE(what);
        CHECK(time.elapsed() < 500ms); // it takes about 30, without sanitizers
    };
    check("taking", [&] { shown.area.setText(text); });
    check("scrolling", [&] { shown.area.scrollToEnd(); });
    check("resizing", [&] {
        shown.view.resize(300, 200);
        QApplication::processEvents();
    });
    check("selecting and copying", [&] {
        shown.area.selectAll();
        shown.area.copy();
    });
    CHECK(shown.lastLineInSight() == "a line\n");
    QApplication::clipboard()->clear();
}

TEST_CASE("a line of a million characters is laid out in parts")
{
    ShownText shown(std::string(1000000, 'x') + "\n" + "end\n");
    const ProcessorTime time;
    shown.area.verticalScrollBar()->setValue(shown.maximum() / 2);
    shown.view.grab();
    shown.area.scrollToEnd();
    shown.view.grab();
    CHECK(time.elapsed() < 2s);
    CHECK(shown.lastLineInSight() == "end\n");
}

TEST_CASE("a change of the palette changes the colours of what is shown")
{
    ShownText shown("green words\n");
    auto dark = QPalette(QColor(50, 50, 50));
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    const auto light = shown.area.viewport()->grab().toImage();
    shown.view.setPalette(dark);
    QApplication::processEvents();
    const auto now = shown.area.viewport()->grab().toImage();
    CHECK(now.pixelColor(now.width() - 3, now.height() - 3) == QColor(Qt::black));
    CHECK(light.pixelColor(light.width() - 3, light.height() - 3) != QColor(Qt::black));
}

TEST_CASE("a message of many rows breaks only where a row is full, wherever one scrolls to")
{
    std::string words = "start";
    for (int number = 0; words.size() < 60000; ++number)
        words += " word" + std::to_string(number);
    for (const auto& message : {std::string(30000, 'x'), words}) {
        const std::string last = "the next message";
        ShownText shown("first\n" + message + "\n" + last + "\n");
        // The row of each character, by going through all of them from one end, or after a jump into the middle.
        for (const bool jumped : {false, true}) {
            if (jumped)
                shown.area.scrollTo(message.size() / 2);
            const auto& rowHeight = shown.area.characterRect(shown.area.stretchInSight().begin).height();
            REQUIRE(rowHeight > 0);
            double widest = 0;
            double narrowest = 1e9;
            const auto end = 6 + message.size();
            const auto from = jumped ? message.size() / 2 : 6;
            const auto to = jumped ? from + 12000 : end - 200;
            for (auto offset = from; offset < to;) {
                shown.area.scrollTo(offset);
                const auto rect = shown.area.characterRect(offset);
                REQUIRE_FALSE(rect.isNull());
                auto rowEnd = shown.area.offsetAt({10000, rect.center().y()});
                const auto right = shown.area.characterRect(rowEnd - 1).right();
                if (offset > from + 4096) { // the first row that is looked at may begin anywhere
                    widest = std::max<double>(widest, right);
                    narrowest = std::min<double>(narrowest, right);
                }
                offset = rowEnd + 1;
            }
            // Words leave at most the room of one.
            CHECK(widest - narrowest < 12.0 * rowHeight / 2);
        }
        CHECK(shown.area.text()->string().ends_with(last + "\n"));
    }
}

TEST_CASE("what redirects text in a message is shown as a sign, and leaves everything in its place")
{
    const std::string line = "11/20/26 Time Machine ab\u202Ecd\u202C e\u2066f\u2069 \u202Bg\u2067h i\n";
    ShownText shown(line);
    int last = -1;
    for (std::size_t offset = 0; offset + 1 < line.size(); ++offset) {
        if ((static_cast<unsigned char>(line[offset]) & 0xC0U) == 0x80)
            continue;
        const auto rect = shown.area.characterRect(offset);
        CAPTURE(offset);
        CHECK(rect.left() > last);
        last = rect.left();
    }
    shown.area.selectAll();
    CHECK(shown.selected() == line); // copied as it was
    // A message of letters that run to the left does not turn its line around.
    const std::string hebrew = "20.11.26 09:56  \u05D0\u05D1\u05D2\n";
    ShownText other(hebrew);
    CHECK(other.area.characterRect(0).left() < other.area.characterRect(9).left());
    CHECK(other.area.characterRect(9).left() < other.area.characterRect(16).left());
}

TEST_CASE("an empty text shows what stands in its place, to assistive tools too")
{
    ShownText shown("");
    const auto empty = shown.area.viewport()->grab().toImage();
    shown.area.setPlaceholder("No messages.");
    CHECK(shown.area.viewport()->grab().toImage() != empty);
    const auto description = [&shown] {
        return QAccessible::queryAccessibleInterface(&shown.area)->text(QAccessible::Description);
    };
    CHECK(description() == "No messages.");
    shown.area.setText(textOf("a message\n"));
    CHECK(description().isEmpty());
    shown.area.setText(textOf(""));
    shown.area.setPlaceholder({});
    CHECK(shown.area.viewport()->grab().toImage() == empty);
}
