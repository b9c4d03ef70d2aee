#include "tests/pictures/Photographer.h"

#include "platform/linux/ui/AlertBox.h"
#include "tests/platform/ui/AlertWatcher.h"

#include <cstdio>
#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QPointer>
#include <stdexcept>

using platform::ui::AlertBox;

namespace {

QWidget& windowNamed(const char* identifier)
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->objectName() == QLatin1String(identifier))
            return *widget;
    }
    throw std::logic_error(std::string("No such window is on screen: ") + identifier);
}

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

Photographer::Photographer(QDir folder, QString prefix) : _folder(std::move(folder)), _prefix(std::move(prefix))
{
    qApp->installEventFilter(this);
}

Photographer::~Photographer() = default;

void Photographer::photographWindow(const char* identifier)
{
    user::runEvents();
    save(framed(windowNamed(identifier)));
}

void Photographer::photographSheet(const char* identifier)
{
    user::runEvents();
    auto* const sheet = user::AlertWatcher::front();
    if (!sheet)
        throw std::logic_error("No alert is on screen for " + _name);
    save(inFront(*sheet, windowNamed(identifier)));
}

void Photographer::photographNextAlert()
{
    _awaitsAlert = true;
}

bool Photographer::eventFilter(QObject* object, QEvent* event)
{
    auto* const box = event->type() == QEvent::Show ? qobject_cast<AlertBox*>(object) : nullptr;
    if (box && _awaitsAlert) {
        _awaitsAlert = false;
        QMetaObject::invokeMethod(
            this,
            [this, alert = QPointer(box)] {
                if (alert)
                    save(framed(*alert));
            },
            Qt::QueuedConnection);
    }
    return false;
}

void Photographer::save(const QPixmap& picture)
{
    const auto path = _folder.filePath(_prefix + QString::fromStdString(_name) + QStringLiteral(".png"));
    if (picture.save(path)) {
        ++_saved;
        std::printf("%s\n", qPrintable(path));
    } else {
        _failed = true;
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
    }
}
