#pragma once

#include <QObject>

class QWidget;

// Somebody to whom states of the application are shown, who sees each window and alert laid out and on screen.
class Onlooker : public QObject {
public:
    Onlooker();

    // The window alone, whose identifier this is, or with the alert that is attached to it.
    void lookAtWindow(const char* identifier = "mainWindow");
    void lookAtSheet(const char* identifier = "mainWindow");
    // The next alert that shows, by itself, before it is answered.
    void lookAtNextAlert() { _awaitsAlert = true; }

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    // `sheet` is null for a window, or an alert, by itself.
    virtual void see(QWidget& window, QWidget* sheet) = 0;

private:
    bool _awaitsAlert = false;
};
