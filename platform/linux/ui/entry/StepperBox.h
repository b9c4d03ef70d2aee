#pragma once

#include <QSpinBox>

namespace platform::ui {

// A pair of arrows without a field: another control shows the value.
class StepperBox : public QSpinBox {
    Q_OBJECT

public:
    explicit StepperBox(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
};

} // namespace platform::ui
