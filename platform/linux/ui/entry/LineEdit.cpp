#include "platform/linux/ui/entry/LineEdit.h"

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
    // What is inserted replaces the selection or stands at the cursor; what is deleted was after the cursor's new
    // place.
    const auto removed = std::max<qsizetype>(_value.size() - proposed.size(), 0);
    const std::array places{
        _caretBefore.selectionStart >= 0 ? TextEdit::Place{_caretBefore.selectionStart, _caretBefore.selectionLength}
                                         : TextEdit::Place{_caretBefore.position, 0},
        TextEdit::Place{positionAfter, removed},
    };
    _refused = !_judge(TextEdit::between(_value, proposed, places));
    return !_refused;
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
