#pragma once

#include "platform/linux/ui/layout/ConstraintSolver.h"

#include <optional>
#include <QSize>
#include <QWidget>
#include <vector>

namespace platform::ui {

// The equations of one container and its subviews: the constraints of the container's view, and for each subview that
// it wants the size of its hint. Positions run from the leading edge, and are mirrored where the layout's direction is.
class ConstraintSystem {
public:
    // An extent without a value is to be as small as it can be.
    struct Request {
        std::optional<int> width;
        std::optional<int> height;
        bool compressed = false; // down to the subviews' minimum sizes
    };
    struct Solution {
        QSize size;
        std::vector<QRect> frames; // as the widgets
    };

    ConstraintSystem(QWidget* container, const std::vector<QWidget*>& widgets);

    Solution solve(const Request& request);

private:
    struct Item {
        QWidget* widget;
        std::size_t leading, top, width, height;
        QSize hint;
        QSize least;
    };

    void solveWithHints(const Request& request);
    bool takeHeightsForWidths();
    void addOwnSize(const Request& request);
    std::optional<std::size_t> addConstraint(const LayoutConstraint& constraint);
    void addSizeOf(const Item& item, double weight);
    void addExtent(std::size_t variable, int hint, int least, int most, QSizePolicy::Policy policy, double weight);
    std::optional<LinearExpression> side(const std::weak_ptr<View>& view, LayoutAttribute attribute) const;
    LinearExpression ownSide(LayoutAttribute attribute) const;
    LinearExpression itemSide(const Item& item, LayoutAttribute attribute) const;
    Solution solution(const Request& request) const;

    QWidget* _container;
    std::vector<Item> _items;
    std::size_t _width = 0;
    std::size_t _height = 0;
    ConstraintSolver _solver;
};

} // namespace platform::ui
