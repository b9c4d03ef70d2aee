#pragma once

#include "platform/ui/ButtonCell.h"

#include <memory>
#include <QPushButton>

namespace platform::ui {

// A button of its title alone, which a cell draws.
class TitleButton : public QPushButton {
    Q_OBJECT

public:
    explicit TitleButton(std::shared_ptr<const ButtonCell> cell);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::shared_ptr<const ButtonCell> _cell;
};

} // namespace platform::ui
