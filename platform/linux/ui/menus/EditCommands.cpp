#include "platform/linux/ui/menus/EditCommands.h"

#include "platform/linux/ui/menus/MenuItemBinding.h"
#include "platform/linux/ui/styledtext/StyledTextArea.h"
#include "platform/linux/ui/windows/InterfaceWindow.h"

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

bool mayRun(MenuCommand command, const QLineEdit& line)
{
    const bool readable = line.echoMode() == QLineEdit::Normal && line.hasSelectedText();
    if (command == MenuCommand::Undo)
        return line.isUndoAvailable();
    if (command == MenuCommand::Redo)
        return line.isRedoAvailable();
    if (command == MenuCommand::Cut)
        return readable && !line.isReadOnly();
    if (command == MenuCommand::Copy)
        return readable;
    if (command == MenuCommand::Paste)
        return !line.isReadOnly() && isTextOnClipboard();
    return !line.text().isEmpty();
}

// The toolkit's slot of the command.
const char* slotOf(MenuCommand command)
{
    switch (command) {
    case MenuCommand::Undo:
        return "undo";
    case MenuCommand::Redo:
        return "redo";
    case MenuCommand::Cut:
        return "cut";
    case MenuCommand::Copy:
        return "copy";
    case MenuCommand::Paste:
        return "paste";
    default:
        return "selectAll";
    }
}

// Of either class of texts of many lines, which share no base for this.
template <class Text>
bool mayRunInText(MenuCommand command, const Text& text)
{
    const bool selected = text.textCursor().hasSelection();
    if (command == MenuCommand::Undo)
        return !text.isReadOnly() && text.document()->isUndoAvailable();
    if (command == MenuCommand::Redo)
        return !text.isReadOnly() && text.document()->isRedoAvailable();
    if (command == MenuCommand::Cut)
        return selected && !text.isReadOnly();
    if (command == MenuCommand::Copy)
        return selected;
    if (command == MenuCommand::Paste)
        return !text.isReadOnly() && isTextOnClipboard();
    return !text.document()->isEmpty();
}

bool mayRun(MenuCommand command, const StyledTextArea& text)
{
    if (command == MenuCommand::Copy)
        return !text.selection().isEmpty();
    return command == MenuCommand::SelectAll && !text.text()->empty();
}

} // namespace

EditCommands::EditCommands(QMainWindow& window) : QObject(&window), _window(window)
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (!qobject_cast<QMenuBar*>(now))
            _focused = now;
    });
}

void EditCommands::connectAction(QAction& action, MenuCommand command)
{
    connect(&action, &QAction::triggered, this, [this, command] { run(command); });
    enableWhileMenuIsOpen(action, *this, [this, command] { return isPossible(command); });
}

QWidget* EditCommands::field() const
{
    if (qobject_cast<QAbstractSpinBox*>(_focused))
        return _focused->findChild<QLineEdit*>();
    return _focused;
}

void EditCommands::run(MenuCommand command) const
{
    auto* const window = qobject_cast<InterfaceWindow*>(&_window);
    if (isPossibleInText(command))
        QMetaObject::invokeMethod(field(), slotOf(command));
    else if (window && isPossible(command))
        window->undo();
}

bool EditCommands::isPossible(MenuCommand command) const
{
    const auto* const window = qobject_cast<InterfaceWindow*>(&_window);
    const bool canUndo = command == MenuCommand::Undo && window && window->canUndo() && window->isActiveWindow();
    return canUndo || isPossibleInText(command);
}

bool EditCommands::isPossibleInText(MenuCommand command) const
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
