#include "layout/ZRKStackView.h"

#include <utility>

using platform::ui::LayoutAttribute;
using platform::ui::LayoutConstraint;
using platform::ui::LayoutRelation;

namespace {

constexpr double Spacing = 8;
constexpr double ControlMargin = 2;
constexpr int SoftPriority = 700;

using ViewPointer = std::shared_ptr<platform::ui::View>;

LayoutConstraint constraint(const ViewPointer& first, LayoutAttribute firstAttribute, LayoutRelation relation,
                            const ViewPointer& second, LayoutAttribute secondAttribute, double constant,
                            int priority = LayoutConstraint::Required)
{
    return {first, firstAttribute, relation, second, secondAttribute, 1, constant, priority};
}

LayoutConstraint equality(const ViewPointer& first, LayoutAttribute firstAttribute, const ViewPointer& second,
                          LayoutAttribute secondAttribute, double constant, int priority = LayoutConstraint::Required)
{
    return constraint(first, firstAttribute, LayoutRelation::Equal, second, secondAttribute, constant, priority);
}

// The same edge of both.
LayoutConstraint equality(const ViewPointer& first, const ViewPointer& second, LayoutAttribute edge, double constant,
                          int priority = LayoutConstraint::Required)
{
    return equality(first, edge, second, edge, constant, priority);
}

LayoutConstraint atLeast(const ViewPointer& first, const ViewPointer& second, LayoutAttribute edge, double constant)
{
    return constraint(first, edge, LayoutRelation::GreaterThanOrEqual, second, edge, constant);
}

} // namespace

ZRKStackView::ZRKStackView(std::shared_ptr<View> view, Views views) : _view(std::move(view)), _views(std::move(views))
{
}

std::shared_ptr<ZRKStackView> ZRKStackView::create(std::shared_ptr<View> view)
{
    return initWithViews(std::move(view), {});
}

std::shared_ptr<ZRKStackView> ZRKStackView::initWithViews(std::shared_ptr<View> view, Views views)
{
    return std::shared_ptr<ZRKStackView>(new ZRKStackView(std::move(view), std::move(views)));
}

void ZRKStackView::setViews(Views views)
{
    for (const ViewPointer& old : _views)
        old->removeFromSuperview();
    for (const ViewPointer& view : views)
        _view->addSubview(view);
    _views = std::move(views);
    updateConstraintsForViews(_views);
}

void ZRKStackView::updateConstraintsForViews(const Views& views)
{
    if (!_constraints.empty())
        _view->removeConstraints(_constraints);
    _constraints = constraintsForViews(views);
    _view->addConstraints(_constraints);
}

ZRKStackView::Constraints ZRKStackView::constraintsForViews(const Views& views) const
{
    return _orientation == Vertical ? verticalConstraintsForViews(views) : horizontalConstraintsForViews(views);
}

ZRKStackView::Constraints ZRKStackView::verticalConstraintsForViews(const Views& views) const
{
    using enum LayoutAttribute;
    if (views.empty())
        return {};
    const ViewPointer& first = views.front();
    const ViewPointer& last = views.back();
    Constraints constraints{
        equality(_view, first, Top, -marginForView(*first)),
        equality(_view, last, Bottom, marginForView(*last)),
        equality(_view, first, Leading, -marginForView(*first)),
    };
    for (std::size_t i = 0; i < views.size(); ++i) {
        const double margin = marginForView(*views[i]);
        if (i + 1 < views.size())
            constraints.push_back(equality(views[i + 1], Top, views[i], Bottom, Spacing));
        constraints.push_back(equality(views[i], _view, Leading, margin));
        constraints.push_back(equality(_view, views[i], Trailing, margin, SoftPriority));
        constraints.push_back(atLeast(_view, views[i], Trailing, margin));
    }
    return constraints;
}

ZRKStackView::Constraints ZRKStackView::horizontalConstraintsForViews(const Views& views) const
{
    using enum LayoutAttribute;
    if (views.empty())
        return {};
    Constraints constraints{
        equality(_view, views.front(), Leading, 0),
        equality(_view, views.back(), Trailing, 0),
    };
    for (std::size_t i = 0; i < views.size(); ++i) {
        if (i + 1 < views.size()) {
            constraints.push_back(equality(views[i + 1], Leading, views[i], Trailing, Spacing));
            constraints.push_back(equality(views[i], views[i + 1], LastBaseline, 0));
        }
        constraints.push_back(equality(views[i], _view, Top, 0, SoftPriority));
        constraints.push_back(equality(views[i], _view, Bottom, 0, SoftPriority));
        constraints.push_back(atLeast(views[i], _view, Top, 0));
        constraints.push_back(atLeast(_view, views[i], Bottom, 0));
    }
    return constraints;
}

double ZRKStackView::marginForView(const View& view) const
{
    return view.isPlainContainer() ? 0 : ControlMargin;
}
