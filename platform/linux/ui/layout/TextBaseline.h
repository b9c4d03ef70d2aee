#pragma once

#include <QWidget>

namespace platform::ui {

// Where the last line of a widget's text stands: its distance from the top is share * height + offset.
struct TextBaseline {
    double share = 1;
    double offset = 0;
};

// For the given width, which decides how a label's text wraps. The bottom edge for a widget without text of its own.
TextBaseline textBaseline(const QWidget* widget, int width);

// The widget's baseline counts as this much higher from then on. Points.
void setBaselineCorrection(QWidget& widget, double points);

} // namespace platform::ui
