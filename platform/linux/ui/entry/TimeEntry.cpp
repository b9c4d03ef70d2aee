#include "platform/linux/ui/entry/TimeEntry.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <utility>

namespace platform::ui {

namespace {

bool isPlain(const QKeyEvent& event)
{
    return (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
}

} // namespace

TimeEntry::TimeEntry(QTimeEdit& edit) : QObject(&edit), _edit(edit)
{
    edit.installEventFilter(this);
    edit.findChild<QLineEdit*>()->installEventFilter(this);
}

bool TimeEntry::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease && watched != &_edit) {
        auto& line = static_cast<QLineEdit&>(*watched);
        line.event(event); // it ends a selection of the user's first
        if (!line.hasSelectedText())
            _edit.setSelectedSection(_edit.currentSection());
        _section = QDateTimeEdit::NoSection;
        return true;
    }
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        _section = QDateTimeEdit::NoSection;
    if (event->type() != QEvent::KeyPress || watched != &_edit)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    return isPlain(key) && takeKey(key.text());
}

// False for what the toolkit sees to.
bool TimeEntry::takeKey(const QString& text)
{
    const bool hasMovedOn = std::exchange(_hasMovedOn, false);
    if (text.size() != 1) {
        _section = QDateTimeEdit::NoSection;
        return false;
    }
    if (text[0].digitValue() < 0) {
        // What stands between hour and minute, by which people move on themselves.
        const bool isSeparator = hasMovedOn && _edit.displayFormat().contains(text[0]) && !text[0].isLetter();
        if (!isSeparator)
            _section = QDateTimeEdit::NoSection;
        return isSeparator;
    }
    if (_section == QDateTimeEdit::NoSection || _section != _edit.currentSection())
        beginSection();
    if (_section != QDateTimeEdit::HourSection && _section != QDateTimeEdit::MinuteSection)
        return false;
    typeDigit(text[0].digitValue());
    return true;
}

void TimeEntry::beginSection()
{
    const auto& line = *_edit.findChild<QLineEdit*>();
    const bool isAllSelected = line.hasSelectedText() && line.selectedText() == line.text();
    if (isAllSelected)
        _edit.setCurrentSectionIndex(0);
    _section = _edit.currentSection();
    _digits = 0;
}

void TimeEntry::typeDigit(int digit)
{
    const bool isHour = _section == QDateTimeEdit::HourSection;
    const int greatest = !isHour ? 59 : isInHalfDays() ? 12 : 23;
    if (_digits == 0 || _value * 10 + digit > greatest) {
        _value = digit;
        _digits = 1;
    } else {
        _value = _value * 10 + digit;
        ++_digits;
    }
    const bool isComplete = _digits == 2 || _value * 10 > greatest;
    setValue(_value);
    _edit.setSelectedSection(_section);
    if (!isComplete)
        return;
    _digits = 0;
    if (isHour) {
        _edit.setSelectedSection(QDateTimeEdit::MinuteSection);
        _section = QDateTimeEdit::MinuteSection;
        _hasMovedOn = true;
    }
}

void TimeEntry::setValue(int value)
{
    const auto time = _edit.time();
    if (_section == QDateTimeEdit::MinuteSection)
        _edit.setTime({time.hour(), value});
    else if (!isInHalfDays())
        _edit.setTime({value, time.minute()});
    else if (value > 0) // the first digit of 01 to 09 is no hour yet
        _edit.setTime({value % 12 + (time.hour() < 12 ? 0 : 12), time.minute()});
}

} // namespace platform::ui
