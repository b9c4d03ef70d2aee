#include "platform/linux/ui/styledtext/StyledTextView.h"

#include <doctest/doctest.h>
#include <QAccessible>
#include <QApplication>

using namespace platform;
using namespace platform::ui;

namespace {

struct Spoken {
    explicit Spoken(const std::string& string)
    {
        auto text = std::make_shared<StyledText>();
        text->appendString(string, {});
        view.setAccessibleName("Log");
        view.resize(500, 300);
        view.show();
        view.area().setText(text);
        interface = QAccessible::queryAccessibleInterface(&view.area());
        REQUIRE(interface);
        words = interface->textInterface();
        REQUIRE(words);
    }

    StyledTextView view;
    QAccessibleInterface* interface = nullptr;
    QAccessibleTextInterface* words = nullptr;
};

} // namespace

TEST_CASE("assistive tools see a text of many lines that is read only, under the control's name")
{
    Spoken spoken("one\n");
    CHECK(spoken.interface->role() == QAccessible::EditableText);
    CHECK(spoken.interface->text(QAccessible::Name) == "Log");
    CHECK(spoken.interface->state().readOnly);
    CHECK(spoken.interface->state().multiLine);
    CHECK(spoken.interface->state().focusable);
}

TEST_CASE("assistive tools read the text by lines, words and characters, counted in UTF-16 units")
{
    Spoken spoken("caf\u00e9 \U0001F600 one\nsecond line\n");
    auto& words = *spoken.words;
    CHECK(words.characterCount() == 24);
    CHECK(words.text(0, 7) == QString::fromUtf8("caf\u00e9 \U0001F600"));
    int start = 0;
    int end = 0;
    CHECK(words.textAtOffset(14, QAccessible::LineBoundary, &start, &end) == "second line\n");
    CHECK(start == 12);
    CHECK(end == 24);
    CHECK(words.textBeforeOffset(14, QAccessible::LineBoundary, &start, &end)
          == QString::fromUtf8("caf\u00e9 \U0001F600 one\n"));
    CHECK(words.textAfterOffset(2, QAccessible::LineBoundary, &start, &end) == "second line\n");
    CHECK(words.textAtOffset(14, QAccessible::WordBoundary, &start, &end) == "second");
    CHECK(words.textAtOffset(5, QAccessible::CharBoundary, &start, &end) == QString::fromUtf8("\U0001F600"));
    CHECK(start == 5);
    CHECK(end == 7);
    CHECK(words.textBeforeOffset(0, QAccessible::LineBoundary, &start, &end).isEmpty());
}

TEST_CASE("assistive tools select, scroll and find characters on the screen")
{
    std::string lines;
    for (int number = 0; number < 500; ++number)
        lines += "line " + std::to_string(number) + "\n";
    Spoken spoken(lines);
    auto& words = *spoken.words;
    words.addSelection(0, 4);
    CHECK(spoken.view.area().selectedText() == "line");
    CHECK(words.selectionCount() == 1);
    int start = 0;
    int end = 0;
    words.selection(0, &start, &end);
    CHECK(start == 0);
    CHECK(end == 4);
    words.removeSelection(0);
    CHECK(words.selectionCount() == 0);
    CHECK(words.characterRect(words.characterCount() - 3).isNull());
    words.scrollToSubstring(words.characterCount() - 3, words.characterCount() - 1);
    const auto rect = words.characterRect(words.characterCount() - 3);
    REQUIRE_FALSE(rect.isNull());
    CHECK(words.offsetAtPoint({rect.left() + 1, rect.center().y()}) == words.characterCount() - 3);
}
