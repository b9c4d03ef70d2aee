#include "platform/linux/ui/controls/Spinner.h"

#include <QPainter>

namespace platform::ui {

namespace {

constexpr int spokes = 12;
constexpr int stepMilliseconds = 80;

} // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent)
{
    auto policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void Spinner::setSpinning(bool spinning)
{
    _spinning = spinning;
    setVisible(spinning);
}

QSize Spinner::sizeHint() const
{
    return {20, 20};
}

void Spinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double radius = std::min(width(), height()) / 2.0;
    painter.translate(rect().center() + QPointF(0.5, 0.5));
    auto color = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (_step - spoke + spokes) % spokes;
        color.setAlphaF(static_cast<float>(1.0 - 0.8 * age / spokes));
        painter.setPen(QPen(color, radius / 6, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(spoke * 360.0 / spokes);
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.85));
        painter.restore();
    }
}

void Spinner::showEvent(QShowEvent*)
{
    _timer.start(stepMilliseconds, this);
}

void Spinner::hideEvent(QHideEvent*)
{
    _timer.stop();
}

void Spinner::timerEvent(QTimerEvent*)
{
    _step = (_step + 1) % spokes;
    update();
}

} // namespace platform::ui
