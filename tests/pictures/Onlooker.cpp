#include "tests/pictures/Onlooker.h"

#include "platform/linux/ui/dialogs/AlertBox.h"
#include "tests/platform/ui/AlertWatcher.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <stdexcept>
#include <string>

using platform::ui::AlertBox;

namespace {

QWidget& windowOnScreen(const char* identifier)
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->objectName() == QLatin1String(identifier))
            return *widget;
    }
    throw std::logic_error(std::string("No such window is on screen: ") + identifier);
}

} // namespace

Onlooker::Onlooker()
{
    qApp->installEventFilter(this);
}

void Onlooker::lookAtWindow(const char* identifier)
{
    user::runEvents();
    see(windowOnScreen(identifier), nullptr);
}

void Onlooker::lookAtSheet(const char* identifier)
{
    user::runEvents();
    auto* const sheet = user::AlertWatcher::front();
    if (!sheet)
        throw std::logic_error(std::string("No alert is on screen for ") + identifier);
    see(windowOnScreen(identifier), sheet);
}

bool Onlooker::eventFilter(QObject* object, QEvent* event)
{
    auto* const box = event->type() == QEvent::Show ? qobject_cast<AlertBox*>(object) : nullptr;
    if (box && _awaitsAlert) {
        _awaitsAlert = false;
        QMetaObject::invokeMethod(
            this,
            [this, alert = QPointer(box)] {
                if (alert)
                    see(*alert, nullptr);
            },
            Qt::QueuedConnection);
    }
    return false;
}
