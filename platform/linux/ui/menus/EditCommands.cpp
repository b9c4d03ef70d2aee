#include "platform/linux/ui/menus/EditCommands.h"

#include "platform/linux/ui/menus/MenuItemBinding.h"
#include "platform/linux/ui/styledtext/StyledTextArea.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace platform::ui {

namespace {

bool isTextOnClipboard()
{
    return !QApplication::clipboard()->text().isEmpty();
}

bool mayRun(const QByteArray& command, const QLineEdit& line)
{
    const bool readable = line.echoMode() == QLineEdit::Normal && line.hasSelectedText();
    if (command == "undo")
        return line.isUndoAvailable();
    if (command == "redo")
        return line.isRedoAvailable();
    if (command == "cut")
        return readable && !line.isReadOnly();
    if (command == "copy")
        return readable;
    if (command == "paste")
        return !line.isReadOnly() && isTextOnClipboard();
    return !line.text().isEmpty();
}

// Of either class of texts of many lines, which share no base for this.
template <class Text>
bool mayRunInText(const QByteArray& command, const Text& text)
{
    const bool selected = text.textCursor().hasSelection();
    if (command == "undo")
        return !text.isReadOnly() && text.document()->isUndoAvailable();
    if (command == "redo")
        return !text.isReadOnly() && text.document()->isRedoAvailable();
    if (command == "cut")
        return selected && !text.isReadOnly();
    if (command == "copy")
        return selected;
    if (command == "paste")
        return !text.isReadOnly() && isTextOnClipboard();
    return !text.document()->isEmpty();
}

bool mayRun(const QByteArray& command, const StyledTextArea& text)
{
    if (command == "copy")
        return !text.selection().isEmpty();
    return command == "selectAll" && !text.text()->empty();
}

} // namespace

EditCommands::EditCommands(QMainWindow& window) : QObject(&window)
{
    for (auto* const action : window.findChildren<QAction*>()) {
        if (action->property("editCommand").isValid())
            connectAction(*action);
    }
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (!qobject_cast<QMenuBar*>(now))
            _focused = now;
    });
}

void EditCommands::connectAction(QAction& action)
{
    const auto command = action.property("editCommand").toByteArray();
    connect(&action, &QAction::triggered, this, [this, command] {
        if (isPossible(command))
            QMetaObject::invokeMethod(field(), command.constData());
    });
    enableWhileMenuIsOpen(action, *this, [this, command] { return isPossible(command); });
}

QWidget* EditCommands::field() const
{
    if (qobject_cast<QAbstractSpinBox*>(_focused))
        return _focused->findChild<QLineEdit*>();
    return _focused;
}

bool EditCommands::isPossible(const QByteArray& command) const
{
    auto* const focused = field();
    if (const auto* const line = qobject_cast<QLineEdit*>(focused))
        return mayRun(command, *line);
    if (const auto* const text = qobject_cast<QPlainTextEdit*>(focused))
        return mayRunInText(command, *text);
    if (const auto* const text = qobject_cast<QTextEdit*>(focused))
        return mayRunInText(command, *text);
    if (const auto* const text = qobject_cast<StyledTextArea*>(focused))
        return mayRun(command, *text);
    return false;
}

} // namespace platform::ui
