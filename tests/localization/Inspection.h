#pragma once

#include <map>
#include <QRect>
#include <QString>
#include <string>
#include <vector>

class QWidget;

// What can be seen to be wrong with a window, once it is laid out.
namespace inspection {

using Complaints = std::vector<std::string>;

// Texts that need more room than their controls have, and controls that reach beyond what holds them or overlap each
// other. One sentence each.
Complaints complaintsAbout(const QWidget& window);

// Of every named control that shows, in the window's coordinates.
std::map<QString, QRect> frames(const QWidget& window);

// As seen in a mirror.
QRect mirrored(const QRect& frame, int windowWidth);

} // namespace inspection
