#include "platform/linux/ui/layout/TextBaseline.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QFontMetricsF>
#include <QLabel>
#include <QLineEdit>

namespace platform::ui {

namespace {

constexpr char CorrectionProperty[] = "brevaneBaselineCorrection";

TextBaseline ofLabel(const QLabel& label, int width)
{
    const QFontMetrics metrics(label.font());
    const int frame = label.margin() + label.frameWidth();
    const int flags = label.wordWrap() ? Qt::TextWordWrap : 0;
    const QRect room(0, 0, width - 2 * frame, QWIDGETSIZE_MAX);
    const int lines =
        label.text().isEmpty() ? metrics.height() : metrics.boundingRect(room, flags, label.text()).height();
    if (label.alignment() & Qt::AlignTop)
        return {0, double(frame + lines - metrics.descent())};
    if (label.alignment() & Qt::AlignBottom)
        return {1, double(-frame - metrics.descent())};
    return {0.5, lines / 2.0 - metrics.descent()};
}

} // namespace

TextBaseline textBaseline(const QWidget* widget, int width)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget))
        return ofLabel(*label, width);
    if (qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget)
        || qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget)) {
        const QFontMetrics metrics(widget->font());
        const double correction = widget->property(CorrectionProperty).toDouble();
        return {0.5, metrics.height() / 2.0 - metrics.descent() - correction};
    }
    return {};
}

void setBaselineCorrection(QWidget& widget, double points)
{
    widget.setProperty(CorrectionProperty, points);
}

} // namespace platform::ui
