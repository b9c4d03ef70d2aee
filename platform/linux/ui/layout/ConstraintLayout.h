#pragma once

#include "platform/linux/ui/layout/ConstraintSystem.h"

#include <memory>
#include <optional>
#include <QLayout>
#include <vector>

namespace platform::ui {

// Places a container's subviews as the constraints of the container's view say. Hidden subviews keep their places.
class ConstraintLayout final : public QLayout {
public:
    explicit ConstraintLayout(QWidget* container);
    ~ConstraintLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;

    QSize sizeHint() const override;
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    void setGeometry(const QRect& rect) override;
    void invalidate() override;

private:
    ConstraintSystem::Solution solve(const ConstraintSystem::Request& request) const;

    std::vector<std::unique_ptr<QLayoutItem>> _items;
    mutable std::optional<QSize> _sizeHint;
    mutable std::optional<QSize> _minimumSize;
    mutable std::optional<QSize> _sizeForWidth;
};

} // namespace platform::ui
