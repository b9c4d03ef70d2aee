#pragma once

#include <QTimeEdit>

namespace platform::ui {

// Lets a time be typed: a click selects the hour or the minute, and digits fill it, then move on to what follows. The
// toolkit alone selects nothing on a click, so that digits find no room. Belongs to its field.
class TimeEntry final : public QObject {
    Q_OBJECT

public:
    explicit TimeEntry(QTimeEdit& edit);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takeKey(const QString& text);
    void typeDigit(int digit);
    void beginSection();
    void setValue(int value);
    bool isInHalfDays() const { return _edit.displayedSections().testFlag(QDateTimeEdit::AmPmSection); }

    QTimeEdit& _edit;
    QDateTimeEdit::Section _section = QDateTimeEdit::NoSection; // that takes the digits
    int _digits = 0;                                            // so many are in it
    int _value = 0;
    bool _hasMovedOn = false; // from the section before, by a digit
};

} // namespace platform::ui
