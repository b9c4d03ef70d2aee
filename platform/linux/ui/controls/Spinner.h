#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace platform::ui {

// Turning spokes. Out of sight, but keeping its place, while it stands still.
class Spinner : public QWidget {
    Q_OBJECT

public:
    explicit Spinner(QWidget* parent = nullptr);

    bool isSpinning() const { return _spinning; }
    void setSpinning(bool spinning);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QBasicTimer _timer; // runs only while the spokes are seen
    int _step = 0;
    bool _spinning = false;
};

} // namespace platform::ui
