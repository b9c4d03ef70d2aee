#pragma once

#include <QMainWindow>
#include <string>

namespace platform::ui {

// The help's first page in the first of the user's languages that it is written in, otherwise in English.
std::string helpPage();

// An action of the window whose property "helpCommand" is "show" opens the help's first page in the user's browser.
class HelpCommand : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit HelpCommand(QMainWindow& window);
};

} // namespace platform::ui
