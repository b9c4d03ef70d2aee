#include "platform/linux/ui/windows/InterfaceWindow.h"

#include "platform/linux/ui/windows/WindowFit.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QPushButton>
#include <QScrollArea>

namespace platform::ui {

namespace {

QRect frameIn(const QWidget& window, const QWidget& widget)
{
    return {widget.mapTo(&window, QPoint(0, 0)), widget.size()};
}

} // namespace

QWidgetList InterfaceWindow::controlsByPosition() const
{
    QWidgetList controls;
    for (auto* const widget : findChildren<QWidget*>()) {
        if (widget->window() == this && widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus)
            && !widget->focusProxy())
            controls += widget;
    }
    const auto frame = [this](const QWidget* widget) { return frameIn(*this, *widget); };
    std::ranges::stable_sort(controls, {}, [&](const QWidget* widget) { return frame(widget).top(); });

    // A row is what begins above the middle of its first control.
    for (auto row = controls.begin(); row != controls.end();) {
        const auto middle = frame(*row).center().y();
        const auto next = std::find_if(row, controls.end(), [&](auto* widget) { return frame(widget).top() > middle; });
        std::stable_sort(row, next, [&](auto* one, auto* other) { return frame(one).left() < frame(other).left(); });
        if (isRightToLeft())
            std::reverse(row, next);
        row = next;
    }
    return controls;
}

void InterfaceWindow::orderTabs() const
{
    const auto controls = controlsByPosition();
    for (qsizetype i = 1; i < controls.size(); ++i)
        setTabOrder(controls[i - 1], controls[i]);
}

bool InterfaceWindow::focusNextPrevChild(bool next)
{
    if (_ordersTabsByPosition)
        orderTabs();
    return QMainWindow::focusNextPrevChild(next);
}

QPushButton* InterfaceWindow::buttonForReturn() const
{
    if (auto* const focused = qobject_cast<QPushButton*>(focusWidget()))
        return focused;
    for (auto* const button : findChildren<QPushButton*>()) {
        if (button->isDefault() && button->isVisible() && button->isEnabled())
            return button;
    }
    return nullptr;
}

QPushButton* InterfaceWindow::buttonForEscape() const
{
    for (auto* const button : findChildren<QPushButton*>()) {
        if (button->property("answersEscape").toBool() && button->isVisible() && button->isEnabled())
            return button;
    }
    return nullptr;
}

void InterfaceWindow::closeEvent(QCloseEvent* event)
{
    QMainWindow::closeEvent(event);
    if (event->isAccepted() && _closeHandler)
        _closeHandler();
    if (!menuWidget() || !event->isAccepted())
        return;
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (auto* const other = qobject_cast<InterfaceWindow*>(widget); other && other != this)
            other->close();
    }
}

void InterfaceWindow::setFrameAutosaveName(const std::string& name)
{
    _frameKey = "Window Frame " + name;
    const auto kept = userDefault(_frameKey);
    const auto* const bytes = kept ? kept->data() : nullptr;
    if (bytes)
        restoreGeometry(
            QByteArray(reinterpret_cast<const char*>(bytes->data()), static_cast<qsizetype>(bytes->size())));
}

bool InterfaceWindow::event(QEvent* event)
{
    const bool isTaken = QMainWindow::event(event);
    if (event->type() == QEvent::LayoutRequest && isVisible())
        fitToScreen(); // its content may need more than before
    return isTaken;
}

QSize InterfaceWindow::leastSize() const
{
    auto least = minimumSizeHint();
    const auto* const content = centralWidget();
    const auto* const rows = content ? content->layout() : nullptr;
    if (rows && rows->hasHeightForWidth()) {
        const int chrome = sizeHint().height() - content->sizeHint().height();
        least.setHeight(std::max(least.height(), chrome + rows->minimumHeightForWidth(content->width())));
    }
    return least;
}

void InterfaceWindow::fitToScreen()
{
    const auto room = WindowFit::room(*this);
    const auto least = leastSize();
    if (least.width() > room.width() || least.height() > room.height())
        scrollContent();
    resize(size().boundedTo(room));
}

void InterfaceWindow::scrollContent()
{
    if (!centralWidget() || qobject_cast<QScrollArea*>(centralWidget()))
        return;
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(takeCentralWidget());
    setCentralWidget(area);
    area->widget()->show();
    layout()->activate(); // the window may be smaller now
}

void InterfaceWindow::undo()
{
    // It may set the next one.
    if (const auto undo = std::exchange(_undo, nullptr))
        undo();
}

void InterfaceWindow::hideEvent(QHideEvent* event)
{
    QMainWindow::hideEvent(event);
    if (_frameKey.empty() || event->spontaneous()) // as when it is minimized
        return;
    const auto frame = saveGeometry();
    setUserDefault(_frameKey, Data(frame.begin(), frame.end()));
}

void InterfaceWindow::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isEscape = event->key() == Qt::Key_Escape;
    if (auto* const button = isReturn ? buttonForReturn() : isEscape ? buttonForEscape() : nullptr)
        return button->click();
    // The menu's key, which does not work while the window that has the menus shows a sheet.
    if (!menuWidget() && event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void InterfaceWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    const auto controls = focusWidget() ? QWidgetList() : controlsByPosition();
    if (!controls.isEmpty())
        controls.first()->setFocus(Qt::OtherFocusReason);
}

} // namespace platform::ui
