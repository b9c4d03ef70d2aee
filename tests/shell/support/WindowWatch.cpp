#include "tests/shell/support/WindowWatch.h"

#include <algorithm>
#include <cstdlib>
#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QWidget>
#include <stdexcept>

WindowWatch::WindowWatch(std::string window, std::function<void(QWidget&)> whenShown)
    : _window(std::move(window)),
      _whenShown(std::move(whenShown))
{
    qApp->installEventFilter(this);
}

bool WindowWatch::eventFilter(QObject* object, QEvent* event)
{
    auto* const widget = event->type() == QEvent::Show ? qobject_cast<QWidget*>(object) : nullptr;
    if (widget && widget->isWindow() && widget->objectName().toStdString() == _window)
        _whenShown(*widget);
    return false;
}

QWidget& windowNamed(const std::string& name)
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->objectName().toStdString() == name)
            return *widget;
    }
    throw std::logic_error("There is no window " + name);
}

int distanceFromCenter(const QWidget& window)
{
    const QPoint distance = window.frameGeometry().center() - window.screen()->availableGeometry().center();
    return std::max(std::abs(distance.x()), std::abs(distance.y()));
}
