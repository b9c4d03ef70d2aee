#include "tests/platform/ui/User.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/menus/MenuItemNative.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionSpinBox>
#include <QTest>
#include <stdexcept>

using namespace platform::ui;

namespace user {

namespace {

// The view's widget, if a person could act on it.
QWidget& reachable(View& view)
{
    auto& widget = *view.native().widget;
    if (!widget.isVisibleTo(widget.window()))
        throw std::logic_error("\"" + view.identifier() + "\" is hidden");
    if (!widget.isEnabled())
        throw std::logic_error("\"" + view.identifier() + "\" is disabled");
    return widget;
}

QWidget& withKeyboard(View& view)
{
    auto& widget = reachable(view);
    widget.setFocus(Qt::OtherFocusReason);
    return widget;
}

Qt::Key qtKey(Key key)
{
    switch (key) {
    case Key::Return:
        return Qt::Key_Return;
    case Key::Escape:
        return Qt::Key_Escape;
    case Key::Tab:
        return Qt::Key_Tab;
    case Key::Backtab:
        return Qt::Key_Backtab;
    case Key::Space:
        return Qt::Key_Space;
    case Key::Up:
        return Qt::Key_Up;
    case Key::Down:
        return Qt::Key_Down;
    case Key::Left:
        return Qt::Key_Left;
    case Key::Right:
        return Qt::Key_Right;
    case Key::Home:
        return Qt::Key_Home;
    case Key::End:
        return Qt::Key_End;
    case Key::Backspace:
        return Qt::Key_Backspace;
    case Key::Delete:
        return Qt::Key_Delete;
    }
    throw std::logic_error("No such key");
}

Qt::KeyboardModifiers qtModifiers(Modifiers modifiers)
{
    Qt::KeyboardModifiers result;
    result.setFlag(Qt::ControlModifier, modifiers.control);
    result.setFlag(Qt::ShiftModifier, modifiers.shift);
    result.setFlag(Qt::AltModifier, modifiers.alt);
    return result;
}

QPoint pointToClick(QWidget& widget)
{
    const auto* const box = qobject_cast<QCheckBox*>(&widget);
    if (!box)
        return widget.rect().center();
    QStyleOptionButton option;
    option.initFrom(box);
    return box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box).center();
}

} // namespace

void click(View& view)
{
    auto& widget = reachable(view);
    QTest::mouseClick(&widget, Qt::LeftButton, {}, pointToClick(widget));
}

void press(View& view, Key key, Modifiers modifiers)
{
    QTest::keyClick(&withKeyboard(view), qtKey(key), qtModifiers(modifiers));
}

void pressCharacter(View& view, char character, Modifiers modifiers)
{
    QTest::keyClick(&withKeyboard(view), character, qtModifiers(modifiers));
}

void type(TextField& field, std::string_view text)
{
    auto& widget = withKeyboard(field);
    for (const QChar character : qtString(text)) {
        const auto code = character.unicode();
        const auto key = code < 0x80 ? static_cast<Qt::Key>(character.toUpper().unicode()) : Qt::Key_unknown;
        QTest::sendKeyEvent(QTest::Click, &widget, key, QString(character), Qt::NoModifier);
    }
}

void replaceText(TextField& field, std::string_view text)
{
    pressCharacter(field, 'a', {.control = true});
    type(field, text);
}

void paste(TextField& field, std::string_view text)
{
    QApplication::clipboard()->setText(qtString(text));
    pressCharacter(field, 'v', {.control = true});
}

void choose(PopUpButton& popUp, int index)
{
    auto& box = dynamic_cast<QComboBox&>(reachable(popUp));
    if (index < 0 || index >= box.count())
        throw std::logic_error("\"" + popUp.identifier() + "\" has no item " + std::to_string(index));
    box.showPopup();
    auto& list = *box.view();
    list.setCurrentIndex(box.model()->index(index, box.modelColumn(), box.rootModelIndex()));
    QTest::keyClick(&list, Qt::Key_Return);
}

void step(Stepper& stepper, StepDirection direction)
{
    auto& box = dynamic_cast<QSpinBox&>(reachable(stepper));
    QStyleOptionSpinBox option;
    option.initFrom(&box);
    option.frame = box.hasFrame();
    option.buttonSymbols = box.buttonSymbols();
    const auto arrow = direction == StepDirection::Up ? QStyle::SC_SpinBoxUp : QStyle::SC_SpinBoxDown;
    const auto place = box.style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, &box);
    QTest::mouseClick(&box, Qt::LeftButton, {}, place.center());
}

void pick(DatePicker& picker, platform::TimeOfDay time)
{
    auto& edit = dynamic_cast<QDateTimeEdit&>(reachable(picker));
    const auto walk = [&](QDateTimeEdit::Section section, auto component, int wanted) {
        edit.setCurrentSection(section);
        for (int now = component(); now != wanted; now = component())
            QTest::keyClick(&edit, now < wanted ? Qt::Key_Up : Qt::Key_Down);
    };
    walk(QDateTimeEdit::MinuteSection, [&] { return edit.time().minute(); }, time.minute);
    walk(QDateTimeEdit::HourSection, [&] { return edit.time().hour(); }, time.hour);
}

bool runEventsUntil(const std::function<bool()>& predicate, int milliseconds)
{
    return QTest::qWaitFor(predicate, milliseconds);
}

void runEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    // Without a loop of the application's own nobody else deletes what is to be deleted later.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace user
