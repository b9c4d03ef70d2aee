#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/rules/RuleEditorBox.h"
#include "platform/linux/ui/rules/RuleRow.h"
#include "platform/linux/ui/windows/InterfaceWindow.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "tests/platform/ui/User.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QScrollBar>
#include <QTest>
#include <QTimeEdit>
#include <QWheelEvent>

using namespace platform::ui;

namespace {

constexpr std::array Titles{"Every Day", "", "Monday", "Tuesday"};

// Gives every row a text, a pop-up, a text and a picker.
class Sentence : public RuleEditorDelegate {
public:
    struct Link : RuleCriterion {
        int position = 0;
    };

    int numberOfChildrenForCriterion(RuleEditor&, const std::shared_ptr<RuleCriterion>& criterion) override
    {
        return positionAfter(criterion) < 4 ? 1 : 0;
    }

    std::shared_ptr<RuleCriterion> childForCriterion(RuleEditor&, int,
                                                     const std::shared_ptr<RuleCriterion>& criterion) override
    {
        auto link = std::make_shared<Link>();
        link->position = positionAfter(criterion);
        return link;
    }

    RuleDisplayValue displayValueForCriterion(RuleEditor&, const std::shared_ptr<RuleCriterion>& criterion,
                                              int row) override
    {
        asked.push_back(row);
        return value(static_cast<Link&>(*criterion).position, {});
    }

    static RuleDisplayValue value(int position, platform::TimeOfDay time)
    {
        static const auto items = std::make_shared<const std::vector<std::string>>(Titles.begin(), Titles.end());
        if (position == 1) {
            const auto popUp = PopUpButton::create(items);
            popUp->setIdentifier("weekdayPopUp");
            popUp->setAccessibleName("weekday");
            return popUp;
        }
        if (position == 3) {
            const auto picker = DatePicker::create();
            picker->setIdentifier("timePicker");
            picker->setAccessibleName("time");
            picker->setTimeOfDay(time);
            return picker;
        }
        return std::string(position == 0 ? "Back up" : "at");
    }

    std::vector<int> asked;

private:
    static int positionAfter(const std::shared_ptr<RuleCriterion>& criterion)
    {
        return criterion ? static_cast<Link&>(*criterion).position + 1 : 0;
    }
};

// A window with the calendar mode's interface and so many rows, of which the first is at 00:00, the next at 00:01 ...
struct Rows {
    explicit Rows(int count)
    {
        editor->setDelegate(delegate);
        editor->setAction([this] { ++actions; });
        append(count);
        window.setOrdersTabsByPosition(true);
        window.setCentralWidget(interface->view()->native().widget);
        window.show();
        QApplication::setActiveWindow(&window);
        user::runEvents();
    }

    ~Rows() { window.takeCentralWidget(); }

    void append(int count)
    {
        for (int row = 0; row < count; ++row)
            editor->setCriteria({}, values(row), editor->numberOfRows());
    }

    static RuleEditor::DisplayValues values(int minutes)
    {
        RuleEditor::DisplayValues row;
        for (int position = 0; position < 4; ++position)
            row.push_back(Sentence::value(position, {minutes / 60 % 24, minutes % 60}));
        return row;
    }

    RuleEditorBox& box() const { return *editor->native().as<RuleEditorBox>(); }
    QScrollBar& bar() const { return *box().verticalScrollBar(); }

    std::vector<RuleRow*> live() const
    {
        std::vector<RuleRow*> rows;
        for (auto* const row : box().viewport()->findChildren<RuleRow*>()) {
            if (row->isVisible())
                rows.push_back(row);
        }
        std::ranges::sort(rows, {}, [](const QWidget* row) { return row->y(); });
        return rows;
    }

    QWidget& part(int position, const char* name) const
    {
        auto* const found =
            live().at(static_cast<std::size_t>(position))->findChild<QWidget*>(QString::fromLatin1(name));
        REQUIRE(found);
        return *found;
    }

    // Clicks the button of the row that is at this position among those in sight.
    void click(int position, const char* button)
    {
        QTest::mouseClick(&part(position, button), Qt::LeftButton);
        user::runEvents();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.focusWidget(), key, modifiers);
        user::runEvents();
    }

    // "Row 2, weekday"; empty when no part of a row has the keyboard.
    std::string focused() const
    {
        const auto* const widget = window.focusWidget();
        return widget ? widget->accessibleName().toStdString() : "";
    }

    std::shared_ptr<DatePicker> picker(int row) const
    {
        return std::dynamic_pointer_cast<DatePicker>(
            std::get<std::shared_ptr<View>>(editor->displayValuesForRow(row)[3]));
    }

    // The minutes of all rows, which tell which ones they are.
    std::vector<int> minutes() const
    {
        std::vector<int> all;
        for (int row = 0; row < editor->numberOfRows(); ++row)
            all.push_back(picker(row)->timeOfDay().minute);
        return all;
    }

    std::shared_ptr<Sentence> delegate = std::make_shared<Sentence>();
    std::unique_ptr<Interface> interface = Interface::load("BRVCalendarIntervalViewController");
    std::shared_ptr<RuleEditor> editor = interface->outlet<RuleEditor>("ruleEditor");
    InterfaceWindow window;
    int actions = 0;
};

} // namespace

TEST_CASE("a row reads like a sentence, with a button to remove it and one to add another")
{
    const Rows rows(1);
    std::vector<std::pair<int, std::string>> parts;
    for (auto* const part : rows.live().at(0)->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        auto text = part->objectName().toStdString();
        if (text.empty())
            text = part->property("text").toString().toStdString();
        parts.emplace_back(part->x(), text);
    }
    std::ranges::sort(parts);
    std::vector<std::string> sentence;
    for (const auto& [x, text] : parts)
        sentence.push_back(text);
    CHECK(
        sentence
        == std::vector<std::string>{"Back up", "weekdayPopUp", "at", "timePicker", "removeRowButton", "addRowButton"});
}

TEST_CASE("from right to left a row is mirrored")
{
    Rows rows(1);
    rows.window.setLayoutDirection(Qt::RightToLeft);
    user::runEvents();
    CHECK(rows.part(0, "weekdayPopUp").x() > rows.part(0, "timePicker").x());
    CHECK(rows.part(0, "timePicker").x() > rows.part(0, "removeRowButton").x());
    CHECK(rows.part(0, "removeRowButton").x() > rows.part(0, "addRowButton").x());
}

TEST_CASE("only the rows in sight have widgets, however many rows there are")
{
    const Rows rows(500);
    CHECK(rows.editor->numberOfRows() == 500);
    const auto inSight = rows.live().size();
    CHECK(inSight >= 2);
    CHECK(inSight < 20);
    int realized = 0;
    for (int row = 0; row < 500; ++row)
        realized += rows.picker(row)->native().widget ? 1 : 0;
    CHECK(realized == static_cast<int>(inSight));
    rows.bar().setValue(400);
    user::runEvents();
    CHECK(rows.live().size() == inSight);
    CHECK(rows.picker(400)->native().widget);
    CHECK_FALSE(rows.picker(0)->native().widget);
}

TEST_CASE("rows that scroll out of sight and back show what they showed, and what was chosen in them")
{
    const Rows rows(100);
    user::pick(*rows.picker(1), {.hour = 5, .minute = 17});
    rows.bar().setValue(50);
    CHECK(rows.picker(1)->timeOfDay() == platform::TimeOfDay{5, 17});
    rows.picker(2)->setTimeOfDay({6, 18});
    rows.bar().setValue(0);
    user::runEvents();
    CHECK(rows.picker(1)->native().as<QTimeEdit>()->time() == QTime(5, 17));
    CHECK(rows.picker(2)->native().as<QTimeEdit>()->time() == QTime(6, 18));
}

TEST_CASE("a whole page of rows fits, and the last one can be scrolled to")
{
    const Rows rows(100);
    rows.bar().setValue(rows.bar().maximum());
    user::runEvents();
    const auto live = rows.live();
    CHECK(live.back()->geometry().bottom() < rows.box().viewport()->height());
    CHECK(rows.picker(99)->native().widget->parentWidget() == live.back());
}

TEST_CASE("adding asks the delegate for a row below, gives it the keyboard and runs the action")
{
    Rows rows(3);
    rows.click(1, "addRowButton");
    CHECK(rows.editor->numberOfRows() == 4);
    CHECK(rows.minutes() == std::vector<int>{0, 1, 0, 2});
    CHECK(rows.delegate->asked == std::vector<int>{2, 2, 2, 2});
    CHECK(rows.editor->criteriaForRow(2).size() == 4);
    CHECK(rows.focused() == "Row 3, weekday");
    CHECK(rows.actions == 1);
}

TEST_CASE("removing takes the row away, keeps the keyboard at its place and runs the action")
{
    Rows rows(3);
    rows.part(1, "timePicker").setFocus();
    rows.press(Qt::Key_Tab); // the picker's minute
    rows.press(Qt::Key_Tab);
    CHECK(rows.focused() == "Row 2, remove this row");
    rows.press(Qt::Key_Space);
    CHECK(rows.minutes() == std::vector<int>{0, 2});
    CHECK(rows.focused() == "Row 2, remove this row");
    CHECK(rows.actions == 1);
    rows.press(Qt::Key_Space);
    CHECK(rows.minutes() == std::vector<int>{0});
    CHECK(rows.focused() == "Row 1, time"); // the only row's button is disabled
}

TEST_CASE("the only row cannot be removed by the user")
{
    Rows rows(1);
    CHECK_FALSE(rows.part(0, "removeRowButton").isEnabled());
    rows.part(0, "weekdayPopUp").setFocus();
    rows.press(Qt::Key_Delete);
    CHECK(rows.editor->numberOfRows() == 1);
    CHECK(rows.actions == 0);
    rows.click(0, "addRowButton");
    CHECK(rows.part(0, "removeRowButton").isEnabled());
}

TEST_CASE("without a delegate there is nothing to add")
{
    Rows rows(1);
    rows.delegate.reset();
    rows.click(0, "addRowButton");
    rows.editor->addRow();
    CHECK(rows.editor->numberOfRows() == 1);
    CHECK(rows.actions == 0);
}

TEST_CASE("setting, adding and removing rows in code runs no action")
{
    Rows rows(3);
    rows.editor->addRow();
    rows.editor->setCriteria({}, Rows::values(9), 1);
    user::runEvents();
    CHECK(rows.minutes() == std::vector<int>{0, 9, 2, 0});
    CHECK(rows.part(1, "timePicker").property("time").toTime() == QTime(0, 9));
    rows.editor->removeAllRows();
    user::runEvents();
    CHECK(rows.live().empty());
    CHECK(rows.actions == 0);
}

TEST_CASE("Insert adds a row and Delete removes the keyboard's row, except where Delete is for a field's text")
{
    Rows rows(3);
    rows.part(1, "weekdayPopUp").setFocus();
    rows.press(Qt::Key_Insert);
    CHECK(rows.minutes() == std::vector<int>{0, 1, 0, 2});
    CHECK(rows.focused() == "Row 3, weekday");
    rows.press(Qt::Key_Delete);
    CHECK(rows.minutes() == std::vector<int>{0, 1, 2});
    CHECK(rows.focused() == "Row 3, weekday");
    rows.part(0, "timePicker").setFocus();
    rows.press(Qt::Key_Delete);
    CHECK(rows.editor->numberOfRows() == 3);
    rows.press(Qt::Key_Insert);
    CHECK(rows.editor->numberOfRows() == 4);
}

TEST_CASE("Tab walks through the rows one after the other, scrolls to those out of sight and leaves after the last")
{
    Rows rows(12);
    rows.part(0, "weekdayPopUp").setFocus();
    for (int row = 1; row <= 12; ++row) {
        const auto prefix = "Row " + std::to_string(row);
        CHECK(rows.focused() == prefix + ", weekday");
        rows.press(Qt::Key_Tab);
        CHECK(rows.focused() == prefix + ", time");
        rows.press(Qt::Key_Tab);
        rows.press(Qt::Key_Tab);
        CHECK(rows.focused() == prefix + ", remove this row");
        rows.press(Qt::Key_Tab);
        CHECK(rows.focused() == prefix + ", add a row below");
        rows.press(Qt::Key_Tab);
    }
    CHECK(rows.window.focusWidget()->objectName() == "asapCheckBox");
}

TEST_CASE("Shift and Tab walk back through the rows to the first and beyond")
{
    Rows rows(9);
    rows.bar().setValue(rows.bar().maximum());
    user::runEvents();
    rows.part(static_cast<int>(rows.live().size()) - 1, "addRowButton").setFocus();
    CHECK(rows.focused() == "Row 9, add a row below");
    for (int row = 9; row >= 1; --row) {
        const auto prefix = "Row " + std::to_string(row);
        CHECK(rows.focused() == prefix + ", add a row below");
        rows.press(Qt::Key_Backtab, Qt::ShiftModifier);
        CHECK(rows.focused() == prefix + ", remove this row");
        for (int stops = 0; stops < 3 && rows.focused() != prefix + ", weekday"; ++stops)
            rows.press(Qt::Key_Backtab, Qt::ShiftModifier);
        CHECK(rows.focused() == prefix + ", weekday");
        rows.press(Qt::Key_Backtab, Qt::ShiftModifier);
    }
    CHECK(rows.focused().find("Row") == std::string::npos);
}

TEST_CASE("Page Down and Page Up on a button move the keyboard by what is in sight")
{
    Rows rows(40);
    const int page = rows.bar().pageStep();
    rows.part(0, "addRowButton").setFocus();
    rows.press(Qt::Key_PageDown);
    CHECK(rows.focused() == "Row " + std::to_string(page + 1) + ", add a row below");
    rows.press(Qt::Key_PageUp);
    CHECK(rows.focused() == "Row 1, add a row below");
    rows.press(Qt::Key_PageUp);
    CHECK(rows.focused() == "Row 1, add a row below");
}

TEST_CASE("a row with the keyboard that scrolls out of sight gets it back when it returns, or when Tab goes on from it")
{
    Rows rows(60);
    rows.part(1, "weekdayPopUp").setFocus();
    rows.bar().setValue(30);
    user::runEvents();
    CHECK(rows.window.focusWidget() == &rows.box());
    rows.bar().setValue(0);
    user::runEvents();
    CHECK(rows.focused() == "Row 2, weekday");
    rows.bar().setValue(30);
    user::runEvents();
    rows.press(Qt::Key_Tab);
    CHECK(rows.focused() == "Row 2, time");
    CHECK(rows.bar().value() <= 1);
}

TEST_CASE("rows that are replaced give the keyboard back to the same place")
{
    Rows rows(5);
    rows.part(2, "timePicker").setFocus();
    rows.editor->removeAllRows();
    rows.append(4);
    user::runEvents();
    CHECK(rows.focused() == "Row 3, time");
    rows.editor->removeAllRows();
    rows.append(1);
    user::runEvents();
    CHECK(rows.focused() == "Row 1, time");
}

TEST_CASE("the wheel scrolls the list and never changes the control that it passes over")
{
    const Rows rows(50);
    for (const auto* const name : {"weekdayPopUp", "timePicker"}) {
        auto& control = rows.part(1, name);
        control.setFocus();
        const int before = rows.bar().value();
        const QPointF middle(control.rect().center());
        QWheelEvent turn(middle, control.mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&turn); // the toolkit passes others to nobody else
        QApplication::instance()->notify(&control, &turn);
        user::runEvents();
        CHECK(rows.bar().value() > before);
    }
    CHECK(rows.minutes()[1] == 1);
}

TEST_CASE("assistive tools hear the row's number and what each part is, also after rows came and went")
{
    Rows rows(3);
    const auto spoken = [&](int position, const char* name) {
        auto* const accessible = QAccessible::queryAccessibleInterface(&rows.part(position, name));
        const auto text = accessible->text(QAccessible::Name) + u'|' + accessible->text(QAccessible::Description);
        return text.toStdString();
    };
    CHECK(spoken(1, "weekdayPopUp") == "Every Day|Row 2, weekday");
    CHECK(spoken(1, "timePicker").starts_with("Row 2, time|"));
    CHECK(spoken(1, "removeRowButton").starts_with("Row 2, remove this row|"));
    CHECK(spoken(1, "addRowButton").starts_with("Row 2, add a row below|"));
    rows.click(0, "removeRowButton");
    CHECK(spoken(1, "timePicker").starts_with("Row 2, time|"));
    CHECK(rows.picker(1)->timeOfDay().minute == 2);
    CHECK_FALSE(QAccessible::queryAccessibleInterface(&rows.box())->text(QAccessible::Name).isEmpty());
}

TEST_CASE("a bigger font makes bigger rows")
{
    Rows rows(20);
    const int before = rows.live().front()->height();
    auto font = rows.window.font();
    font.setPointSizeF(font.pointSizeF() * 2);
    rows.window.setFont(font);
    user::runEvents();
    CHECK(rows.live().front()->height() > before);
    CHECK(rows.live().front()->height() >= rows.part(0, "timePicker").sizeHint().height());
}

TEST_CASE("controls that were shown in a row are let go of with it")
{
    Rows rows(3);
    std::weak_ptr<View> weak = rows.picker(0);
    rows.click(0, "removeRowButton");
    CHECK(weak.expired());
    weak = rows.picker(1);
    rows.editor->removeAllRows();
    CHECK(weak.expired());
}

TEST_CASE("a million rows are shown, scrolled through and read")
{
    Rows rows(0);
    rows.append(1'000'000);
    user::runEvents();
    CHECK(rows.live().size() < 20);
    rows.bar().setValue(rows.bar().maximum());
    user::runEvents();
    CHECK(rows.picker(999'999)->native().widget);
    rows.click(0, "removeRowButton");
    CHECK(rows.editor->numberOfRows() == 999'999);
    rows.editor->removeAllRows();
    CHECK(rows.editor->numberOfRows() == 0);
}

TEST_CASE("a pop-up and a picker made in code show on a widget what they were told without one")
{
    const auto popUp = std::get<std::shared_ptr<View>>(Sentence::value(1, {}));
    auto& button = dynamic_cast<PopUpButton&>(*popUp);
    button.selectItemAtIndex(3);
    button.setItemTitleAtIndex(3, "Market day");
    button.setEnabled(false);
    CHECK(button.numberOfItems() == 4);
    CHECK_FALSE(button.native().widget);
    const auto container = View::create();
    container->addSubview(popUp);
    const auto& box = *button.native().as<QComboBox>();
    CHECK(box.currentText() == "Market day");
    CHECK_FALSE(box.isEnabled());
    CHECK(box.objectName() == "weekdayPopUp");
    CHECK(box.count() == 4);
    button.selectItemAtIndex(17);
    CHECK(box.currentIndex() == -1);
    CHECK(button.indexOfSelectedItem() == -1);
    container->removeFromSuperview();
}
