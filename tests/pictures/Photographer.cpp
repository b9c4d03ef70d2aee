#include "tests/pictures/Photographer.h"

#include <cstdio>
#include <QPainter>
#include <QWidget>

namespace {

QPixmap framed(QWidget& widget)
{
    auto picture = widget.grab();
    QPainter painter(&picture);
    painter.setPen(widget.palette().color(QPalette::Mid));
    painter.drawRect(QRect(QPoint(0, 0), widget.size() - QSize(1, 1)));
    return picture;
}

// The sheet in front of the window's middle, where a desktop puts it.
QPixmap inFront(QWidget& sheet, QWidget& window)
{
    constexpr int Edge = 16;
    const QSize size = window.size().expandedTo(sheet.size() + QSize(2 * Edge, 2 * Edge));
    const auto ratio = window.devicePixelRatioF();
    QPixmap picture(size * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(window.palette().color(QPalette::Window));
    QPainter painter(&picture);
    painter.drawPixmap(0, 0, window.grab());
    painter.fillRect(QRect(QPoint(0, 0), size), QColor(0, 0, 0, 90)); // it waits for the answer
    const QSize free = size - sheet.size();
    painter.drawPixmap(free.width() / 2, free.height() / 2, framed(sheet));
    return picture;
}

} // namespace

Photographer::Photographer(QDir folder, QString prefix) : _folder(std::move(folder)), _prefix(std::move(prefix)) { }

void Photographer::see(QWidget& window, QWidget* sheet)
{
    const auto picture = sheet ? inFront(*sheet, window) : framed(window);
    const auto path = _folder.filePath(_prefix + QString::fromStdString(_name) + QStringLiteral(".png"));
    if (picture.save(path)) {
        ++_saved;
        std::printf("%s\n", qPrintable(path));
    } else {
        _failed = true;
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
    }
}
