#pragma once

#include <memory>

namespace platform::ui {

class View;

enum class LayoutAttribute { Left, Right, Top, Bottom, Leading, Trailing, Width, Height, LastBaseline, NotAnAttribute };
enum class LayoutRelation { LessThanOrEqual = -1, Equal = 0, GreaterThanOrEqual = 1 };

// first.attribute relation second.attribute * multiplier + constant. Priorities run from 1 to 1000 (required); a
// constraint of a lower one yields to every higher one. The views are held weakly.
struct LayoutConstraint {
    static constexpr int Required = 1000;

    std::weak_ptr<View> firstView;
    LayoutAttribute firstAttribute = LayoutAttribute::NotAnAttribute;
    LayoutRelation relation = LayoutRelation::Equal;
    std::weak_ptr<View> secondView; // empty with NotAnAttribute: the constant alone
    LayoutAttribute secondAttribute = LayoutAttribute::NotAnAttribute;
    double multiplier = 1;
    double constant = 0;
    int priority = Required;

    bool operator==(const LayoutConstraint& other) const
    {
        return !firstView.owner_before(other.firstView) && !other.firstView.owner_before(firstView)
            && !secondView.owner_before(other.secondView) && !other.secondView.owner_before(secondView)
            && firstAttribute == other.firstAttribute && relation == other.relation
            && secondAttribute == other.secondAttribute && multiplier == other.multiplier && constant == other.constant
            && priority == other.priority;
    }
};

} // namespace platform::ui
