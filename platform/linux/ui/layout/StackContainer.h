#pragma once

#include <QWidget>

namespace platform::ui {

// The widget behind a stack view, to promote to in interface files. It is a class of its own, so a stack view within
// another one is no plain container.
class StackContainer : public QWidget {
    Q_OBJECT
    // A least width of the widget's own would hide from layouts that what is in it needs more.
    Q_PROPERTY(int leastWidth READ leastWidth WRITE setLeastWidth)

public:
    explicit StackContainer(QWidget* parent = nullptr);

    int leastWidth() const { return _leastWidth; }
    void setLeastWidth(int width);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    int _leastWidth = 0;
};

} // namespace platform::ui
