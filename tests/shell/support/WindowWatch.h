#pragma once

#include <functional>
#include <QObject>
#include <string>

class QWidget;

// Calls back each time that a window of this name is about to be seen.
class WindowWatch : public QObject {
public:
    WindowWatch(std::string window, std::function<void(QWidget&)> whenShown);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::string _window;
    std::function<void(QWidget&)> _whenShown;
};

// A top-level window, on screen or not. Throws std::logic_error when there is none.
QWidget& windowNamed(const std::string& name);
// How far its middle, with its frame, is from the middle of the screen, in points: the greater of the two distances.
int distanceFromCenter(const QWidget& window);
