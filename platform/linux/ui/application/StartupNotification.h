#pragma once

#include <QByteArray>

class QWidget;

namespace platform::ui {

// What the launcher of a start waits for: it shows a busy cursor until it hears that the start with this identifier has
// come to its end. All of this does something on X11 alone.

// To be asked before the toolkit is up, which takes it for itself. Empty when there is none.
QByteArray startupIdentifier();

// Tells every launcher that the start is complete.
void completeStartup(const QByteArray& identifier);

// Gives the window the keyboard for a start of the user's, in front and from whichever virtual desktop.
void bringForward(const QWidget& window, const QByteArray& identifier);

} // namespace platform::ui
