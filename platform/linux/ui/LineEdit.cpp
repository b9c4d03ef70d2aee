#include "platform/linux/ui/LineEdit.h"

#include <algorithm>
#include <array>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QValidator>

namespace platform::ui {

class LineEdit::Validator : public QValidator {
public:
    explicit Validator(LineEdit& line) : QValidator(&line), _line(line) { }

    State validate(QString& text, int& position) const override
    {
        return _line.allows(text, position) ? Acceptable : Invalid;
    }

private:
    LineEdit& _line;
};

LineEdit::LineEdit(QWidget* parent) : QLineEdit(parent)
{
    setValidator(new Validator(*this));
    connect(this, &QLineEdit::textChanged, this, &LineEdit::textDidChange);
}

void LineEdit::setValue(const QString& text)
{
    const QScopedValueRollback byProgram(_byProgram, true);
    _value = text;
    setText(text);
}

bool LineEdit::event(QEvent* event)
{
    if (event->type() == QEvent::DeferredDelete)
        return QLineEdit::event(event); // nothing is left of the field after it
    // Deleting a word moves the caret before the edit is proposed, and so does dragging a text over the field.
    _caretBefore = caret();
    _refused = false;
    if (event->type() == QEvent::DragEnter)
        _caretBeforeDrag = _caretBefore;
    const auto before = event->type() == QEvent::Drop ? _caretBeforeDrag : _caretBefore;
    const bool handled = QLineEdit::event(event);
    if (_refused)
        restore(before);
    _refused = false;
    _caretBefore = caret();
    return handled;
}

void LineEdit::keyPressEvent(QKeyEvent* event)
{
    const auto command = [event] {
        switch (event->key()) {
        case Qt::Key_Up:
            return TextCommand::MoveUp;
        case Qt::Key_Down:
            return TextCommand::MoveDown;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return TextCommand::InsertNewline;
        case Qt::Key_Escape:
            return TextCommand::CancelOperation;
        default:
            return TextCommand::Other;
        }
    }();
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const bool isCommand = plain && command != TextCommand::Other;
    if (isCommand && _handleCommand && _handleCommand(command))
        return event->accept();
    QLineEdit::keyPressEvent(event);
}

bool LineEdit::allows(const QString& proposed, int positionAfter)
{
    if (_byProgram || !_judge || proposed == _value)
        return true;
    _refused = !_judge(editLeadingTo(proposed, positionAfter));
    return !_refused;
}

// What was replaced by what does not always follow from the two texts alone ("11" from "1"): the caret decides where it
// can.
LineEdit::Edit LineEdit::editLeadingTo(const QString& proposed, qsizetype positionAfter) const
{
    const auto growth = proposed.size() - _value.size();
    const auto replacing = [&](qsizetype location, qsizetype length) {
        return Edit{location, length, proposed.mid(location, std::max<qsizetype>(length + growth, 0))};
    };
    const qsizetype selected = _caretBefore.selectionStart >= 0 ? _caretBefore.selectionLength : 0;
    const std::array candidates{
        replacing(selected > 0 ? _caretBefore.selectionStart : _caretBefore.position, selected),
        replacing(positionAfter, std::max<qsizetype>(-growth, 0)),
    };
    for (const auto& edit : candidates) {
        if (isEditLeadingTo(proposed, edit))
            return edit;
    }

    const auto shorter = std::min(proposed.size(), _value.size());
    qsizetype prefix = 0;
    while (prefix < shorter && proposed[prefix] == _value[prefix])
        ++prefix;
    if (prefix > 0 && _value[prefix - 1].isHighSurrogate())
        --prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix && proposed[proposed.size() - 1 - suffix] == _value[_value.size() - 1 - suffix])
        ++suffix;
    if (suffix > 0 && _value[_value.size() - suffix].isLowSurrogate())
        --suffix;
    return replacing(prefix, _value.size() - suffix - prefix);
}

bool LineEdit::isEditLeadingTo(const QString& proposed, const Edit& edit) const
{
    return edit.location + edit.length <= _value.size()
        && QString(_value).replace(edit.location, edit.length, edit.replacement) == proposed;
}

void LineEdit::textDidChange()
{
    if (_byProgram)
        return;
    if (_refused)
        return takeBack();
    _value = text();
    Q_EMIT valueEdited();
}

// Undoing, redoing and assistive tools change the text whatever the validator says.
void LineEdit::takeBack()
{
    const QScopedValueRollback byProgram(_byProgram, true);
    redo();
    for (int i = 0; i < 2 && text() != _value && isUndoAvailable(); ++i)
        undo();
    if (text() != _value)
        setText(_value);
    restore(_caretBefore);
}

LineEdit::Caret LineEdit::caret() const
{
    return {.position = cursorPosition(), .selectionStart = selectionStart(), .selectionLength = selectionLength()};
}

void LineEdit::restore(const Caret& caret)
{
    if (caret.selectionStart < 0)
        return setCursorPosition(caret.position);
    // A negative length puts the cursor at the selection's start.
    const bool cursorAtStart = caret.position == caret.selectionStart;
    setSelection(cursorAtStart ? caret.selectionStart + caret.selectionLength : caret.selectionStart,
                 cursorAtStart ? -caret.selectionLength : caret.selectionLength);
}

} // namespace platform::ui
