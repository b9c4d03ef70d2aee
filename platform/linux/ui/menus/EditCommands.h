#pragma once

#include <QMainWindow>
#include <QPointer>

class QAction;

namespace platform::ui {

// The Edit menu: an action whose property "editCommand" names a command of a text field ("cut", "selectAll" ...) acts
// on the field or text that has the keyboard, in whichever window, when there is something for the command to do.
class EditCommands : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit EditCommands(QMainWindow& window);

private:
    void connectAction(QAction& action);
    QWidget* field() const;
    bool isPossible(const QByteArray& command) const;

    QPointer<QWidget> _focused; // unlike the application's, kept while the menu bar has the keyboard
};

} // namespace platform::ui
