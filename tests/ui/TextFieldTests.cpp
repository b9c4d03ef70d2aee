#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/entry/LineEdit.h"
#include "platform/ui/Interface.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QAccessible>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMenu>
#include <QMimeData>

using namespace platform::ui;
using user::Key;

namespace {

class Recorder : public TextFieldDelegate {
public:
    bool shouldChangeText(TextField& field, TextRange range, std::string_view replacement) override
    {
        proposals.push_back(std::to_string(range.location) + "+" + std::to_string(range.length) + "="
                            + std::string(replacement));
        textWhenAsked = field.stringValue();
        return allows;
    }
    void controlTextDidChange(TextField& field) override { changes.push_back(field.stringValue()); }
    bool doCommand(TextField&, TextCommand command) override
    {
        commands.push_back(command);
        return handles;
    }

    std::vector<std::string> proposals;
    std::vector<std::string> changes;
    std::vector<TextCommand> commands;
    std::string textWhenAsked;
    bool allows = true;
    bool handles = false;
};

struct Editing {
    explicit Editing(const std::string& text)
    {
        field->setDelegate(recorder);
        field->setStringValue(text);
    }

    LineEdit& line() const { return *field->native().as<LineEdit>(); }

    // What the delegate was asked since the last call.
    std::string asked()
    {
        std::string all;
        for (const auto& proposal : std::exchange(recorder->proposals, {}))
            all += (all.empty() ? "" : " ") + proposal;
        return all;
    }

    void refuse() const { recorder->allows = false; }

    std::unique_ptr<Interface> interface = Interface::load("BRVIntervalViewController");
    std::shared_ptr<TextField> field = interface->outlet<TextField>("intervalField");
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
};

void drop(QWidget& widget, const QString& text)
{
    QMimeData data;
    data.setText(text);
    const QPointF place = widget.rect().center();
    QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &enter);
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

void commit(QWidget& widget, const QString& text)
{
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&widget, &event);
}

void chooseInContextMenu(QLineEdit& line, const char* name)
{
    const std::unique_ptr<QMenu> menu(line.createStandardContextMenu());
    for (auto* const action : menu->actions()) {
        if (action->text().remove(u'&').startsWith(QLatin1String(name)))
            return action->trigger();
    }
    FAIL("The context menu has no " << name);
}

} // namespace

TEST_CASE("typing proposes each character at the cursor and tells of each change")
{
    Editing editing("12");
    user::press(*editing.field, Key::Home);
    user::type(*editing.field, "34");
    CHECK(editing.asked() == "0+0=3 1+0=4");
    CHECK(editing.recorder->changes == std::vector<std::string>{"312", "3412"});
}

TEST_CASE("while an edit is judged the field still has the text before it")
{
    Editing editing("12");
    user::type(*editing.field, "3");
    CHECK(editing.recorder->textWhenAsked == "12");
    CHECK(editing.field->stringValue() == "123");
}

TEST_CASE("typing the character that stands there already is placed by the cursor")
{
    Editing editing("11");
    user::press(*editing.field, Key::Home);
    user::type(*editing.field, "1");
    CHECK(editing.asked() == "0+0=1");
}

TEST_CASE("typing over a selection proposes to replace it")
{
    Editing editing("90");
    user::replaceText(*editing.field, "95");
    CHECK(editing.asked() == "0+2=9 1+0=5");
    CHECK(editing.field->stringValue() == "95");
}

TEST_CASE("deleting with either key, with and without a selection, is proposed")
{
    Editing editing("1234");
    user::press(*editing.field, Key::Backspace);
    CHECK(editing.asked() == "3+1=");
    user::press(*editing.field, Key::Home);
    user::press(*editing.field, Key::Delete);
    CHECK(editing.asked() == "0+1=");
    user::press(*editing.field, Key::Right, {.shift = true});
    user::press(*editing.field, Key::Delete);
    CHECK(editing.asked() == "0+1=");
    CHECK(editing.field->stringValue() == "3");
}

TEST_CASE("pasting, cutting and undoing are proposed")
{
    Editing editing("5");
    user::paste(*editing.field, "67");
    CHECK(editing.asked() == "1+0=67");
    user::pressCharacter(*editing.field, 'a', {.control = true});
    user::pressCharacter(*editing.field, 'x', {.control = true});
    CHECK(editing.asked() == "0+3=");
    user::pressCharacter(*editing.field, 'z', {.control = true});
    CHECK(editing.asked() == "0+0=567");
    user::pressCharacter(*editing.field, 'z', {.control = true, .shift = true});
    CHECK(editing.asked() == "0+3=");
}

TEST_CASE("dropping a text, composing one and an assistive tool's change are proposed")
{
    Editing editing("5");
    drop(editing.line(), QStringLiteral("8"));
    CHECK(editing.asked() == "1+0=8");
    commit(editing.line(), QStringLiteral("9"));
    CHECK_FALSE(editing.asked().empty());
    editing.field->setStringValue("5");
    QAccessible::queryAccessibleInterface(&editing.line())->setText(QAccessible::Value, QStringLiteral("57"));
    CHECK(editing.recorder->proposals.at(0) == "1+0=7");
    CHECK(editing.field->stringValue() == "57");
}

TEST_CASE("positions count UTF-16 code units and never split a character")
{
    Editing editing("a\U0001D7D8b");
    CHECK(editing.field->length() == 4);
    user::press(*editing.field, Key::Home);
    user::press(*editing.field, Key::Right);
    user::press(*editing.field, Key::Delete);
    CHECK(editing.asked() == "1+2=");
    CHECK(editing.field->stringValue() == "ab");
    editing.field->setStringValue("\U0001D7D8");
    QAccessible::queryAccessibleInterface(&editing.line())->setText(QAccessible::Value, QStringLiteral("\U0001D7D9"));
    CHECK(editing.recorder->proposals.at(0) == "0+2=\U0001D7D9");
}

TEST_CASE("a refused edit of any kind leaves the text, the cursor and the selection as they were")
{
    const std::vector<std::pair<std::string, std::function<void(Editing&)>>> edits{
        {"typing", [](Editing& editing) { user::type(*editing.field, "x"); }},
        {"backspace", [](Editing& editing) { user::press(*editing.field, Key::Backspace); }},
        {"delete", [](Editing& editing) { user::press(*editing.field, Key::Delete); }},
        {"delete word before",
         [](Editing& editing) { user::press(*editing.field, Key::Backspace, {.control = true}); }},
        {"delete word after", [](Editing& editing) { user::press(*editing.field, Key::Delete, {.control = true}); }},
        {"paste", [](Editing& editing) { user::paste(*editing.field, "xyz"); }},
        {"cut", [](Editing& editing) { user::pressCharacter(*editing.field, 'x', {.control = true}); }},
        {"undo", [](Editing& editing) { user::pressCharacter(*editing.field, 'z', {.control = true}); }},
        {"redo", [](Editing& editing) { user::pressCharacter(*editing.field, 'z', {.control = true, .shift = true}); }},
        {"drop", [](Editing& editing) { drop(editing.line(), QStringLiteral("xyz")); }},
        {"input method", [](Editing& editing) { commit(editing.line(), QStringLiteral("x")); }},
        {"menu undo", [](Editing& editing) { chooseInContextMenu(editing.line(), "Undo"); }},
        {"menu redo", [](Editing& editing) { chooseInContextMenu(editing.line(), "Redo"); }},
        {"menu cut", [](Editing& editing) { chooseInContextMenu(editing.line(), "Cut"); }},
        {"menu paste", [](Editing& editing) { chooseInContextMenu(editing.line(), "Paste"); }},
        {"menu delete", [](Editing& editing) { chooseInContextMenu(editing.line(), "Delete"); }},
        {"assistive tool",
         [](Editing& editing) {
             QAccessible::queryAccessibleInterface(&editing.line())->setText(QAccessible::Value, QStringLiteral("x"));
         }},
    };
    // Where the cursor stands, and how far the selection reaches from it.
    const std::vector<std::pair<int, int>> carets{{3, 0}, {2, 4}, {6, -4}, {0, 9}, {9, -9}};

    std::vector<std::string> everRefused;
    for (const auto& [name, edit] : edits) {
        for (const auto& [anchor, length] : carets) {
            CAPTURE(name);
            CAPTURE(anchor);
            CAPTURE(length);
            Editing editing("");
            // A history for undo and redo: "one two 3", then one more that is undone.
            user::type(*editing.field, "one two 3");
            user::paste(*editing.field, "4");
            user::pressCharacter(*editing.field, 'z', {.control = true});
            REQUIRE(editing.field->stringValue() == "one two 3");
            editing.line().setSelection(anchor, length);
            QEvent something(QEvent::UpdateRequest); // as always comes between two deeds of a person
            QCoreApplication::sendEvent(&editing.line(), &something);
            const auto cursor = editing.line().cursorPosition();
            const auto selection = std::pair(editing.line().selectionStart(), editing.line().selectedText());
            editing.asked();
            editing.recorder->changes.clear();

            editing.refuse();
            edit(editing);
            if (!editing.asked().empty())
                everRefused.push_back(name);
            CHECK(editing.field->stringValue() == "one two 3");
            CHECK(editing.line().text() == "one two 3");
            CHECK(editing.line().cursorPosition() == cursor);
            CHECK(std::pair(editing.line().selectionStart(), editing.line().selectedText()) == selection);
            CHECK(editing.recorder->changes.empty());
        }
    }
    for (const auto& [name, edit] : edits) {
        CAPTURE(name);
        CHECK(std::ranges::find(everRefused, name) != everRefused.end());
    }
}

TEST_CASE("after a refused edit the one before it can still be undone")
{
    Editing editing("");
    user::type(*editing.field, "1");
    editing.refuse();
    user::type(*editing.field, "2");
    editing.recorder->allows = true;
    user::pressCharacter(*editing.field, 'z', {.control = true});
    CHECK(editing.field->stringValue().empty());
}

TEST_CASE("setting the text asks nobody and tells nobody")
{
    Editing editing("1");
    editing.refuse();
    editing.field->setStringValue("any text");
    CHECK(editing.field->stringValue() == "any text");
    editing.field->setIntegerValue(-5);
    CHECK(editing.field->stringValue() == "-5");
    CHECK(editing.asked().empty());
    CHECK(editing.recorder->changes.empty());
}

TEST_CASE("a field without a delegate, or whose delegate is gone, takes every edit")
{
    Editing editing("1");
    editing.refuse();
    editing.recorder.reset();
    user::type(*editing.field, "2");
    CHECK(editing.field->stringValue() == "12");
    editing.field->setDelegate({});
    user::type(*editing.field, "3");
    CHECK(editing.field->stringValue() == "123");
}

TEST_CASE("the arrow, Return and Escape keys are commands of the field")
{
    Editing editing("1");
    editing.recorder->handles = true;
    for (const Key key : {Key::Up, Key::Down, Key::Return, Key::Escape, Key::Left})
        user::press(*editing.field, key);
    user::press(*editing.field, Key::Up, {.control = true});
    CHECK(editing.recorder->commands
          == std::vector{TextCommand::MoveUp, TextCommand::MoveDown, TextCommand::InsertNewline,
                         TextCommand::CancelOperation});
}

TEST_CASE("the integer value reads leading space, a sign and decimal digits of any script")
{
    const Editing editing("");
    const std::vector<std::pair<std::string, std::int64_t>> readings{
        {"", 0},
        {"90", 90},
        {"  7 days", 7},
        {"-12", -12},
        {"+3", 3},
        {"- 3", 0},
        {"x1", 0},
        {"\u0661\u0662", 12},
        {"9223372036854775807", INT64_MAX},
        {"9223372036854775808", INT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"-9223372036854775809", INT64_MIN},
        {"99999999999999999999999", INT64_MAX},
    };
    for (const auto& [text, value] : readings) {
        CAPTURE(text);
        editing.field->setStringValue(text);
        CHECK(editing.field->integerValue() == value);
    }
}

TEST_CASE("a label is a text field whose text is shown as it is")
{
    const Editing editing("");
    const auto label = editing.interface->outlet<TextField>("intervalLabel");
    label->setStringValue("<b>5</b> & more");
    CHECK(label->stringValue() == "<b>5</b> & more");
    label->setIntegerValue(12);
    CHECK(label->integerValue() == 12);
    CHECK(label->length() == 2);
    label->setDelegate(editing.recorder);
}
