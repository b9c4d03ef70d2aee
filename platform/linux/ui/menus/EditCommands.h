#pragma once

#include "platform/ui/MenuBar.h"

#include <QMainWindow>
#include <QPointer>

class QAction;

namespace platform::ui {

// The Edit menu: its actions act on the field or text that has the keyboard, in whichever window, when there is
// something for the command to do.
class EditCommands : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit EditCommands(QMainWindow& window);

    // From Undo to SelectAll. The action stands in its menu already.
    void connectAction(QAction& action, MenuCommand command);

private:
    QWidget* field() const;
    bool isPossible(MenuCommand command) const;
    bool isPossibleInText(MenuCommand command) const;
    void run(MenuCommand command) const;

    QMainWindow& _window;
    QPointer<QWidget> _focused; // unlike the application's, kept while the menu bar has the keyboard
};

} // namespace platform::ui
