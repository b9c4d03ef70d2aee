#pragma once

#include <QMainWindow>
#include <QPointer>

class QAction;
class QLineEdit;

namespace platform::ui {

// The Edit menu: an action whose property "editCommand" names a command of a text field ("cut", "selectAll" ...) acts
// on the field that has the keyboard.
class EditCommands : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit EditCommands(QMainWindow& window);

private:
    void connectAction(QAction& action);
    QLineEdit* field() const;

    QPointer<QWidget> _focused; // unlike the application's, kept while the menu bar has the keyboard
};

} // namespace platform::ui
