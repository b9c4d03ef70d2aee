#pragma once

#include "platform/ui/View.h"

#include <memory>
#include <vector>

// Lays views out in one column or one row of its view, by constraints that it builds itself. Main thread only.
class ZRKStackView {
public:
    using View = platform::ui::View;
    using Views = std::vector<std::shared_ptr<View>>;
    using Constraints = std::vector<platform::ui::LayoutConstraint>;

    static constexpr int Horizontal = 0; // as every other number than Vertical
    static constexpr int Vertical = 1;

    // `view` is what the views are put into. It holds no others and is horizontal.
    static std::shared_ptr<ZRKStackView> create(std::shared_ptr<View> view);
    // Holds the views, but neither puts them into `view` nor builds constraints.
    static std::shared_ptr<ZRKStackView> initWithViews(std::shared_ptr<View> view, Views views);

    const std::shared_ptr<View>& view() const { return _view; }
    const Views& views() const { return _views; }
    // Takes the old views out, puts the new ones in and lays them out. None: an empty view without constraints.
    void setViews(Views views);

    int orientation() const { return _orientation; }
    // Takes effect at the next `setViews`.
    void setOrientation(int orientation) { _orientation = orientation; }

    // Replaces the constraints installed before.
    void updateConstraintsForViews(const Views& views);
    Constraints constraintsForViews(const Views& views) const;
    Constraints verticalConstraintsForViews(const Views& views) const;
    Constraints horizontalConstraintsForViews(const Views& views) const;
    // Points kept free around a view in a column: none around a plain container.
    double marginForView(const View& view) const;

private:
    ZRKStackView(std::shared_ptr<View> view, Views views);

    const std::shared_ptr<View> _view;
    Views _views;
    Constraints _constraints;
    int _orientation = Horizontal;
};
