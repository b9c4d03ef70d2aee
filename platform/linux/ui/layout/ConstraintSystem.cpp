#include "platform/linux/ui/layout/ConstraintSystem.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/layout/TextBaseline.h"

#include <algorithm>
#include <cmath>
#include <QDebug>
#include <sstream>
#include <string>
#include <utility>

namespace platform::ui {

namespace {

// The priorities of what Auto Layout adds by itself to a window's constraints.
constexpr int WidgetLimit = 999;
constexpr int OwnSize = 998;
constexpr int CompressionResistance = 750;
constexpr int StrongHugging = 750;
constexpr int Hugging = 250;
constexpr int WeakHugging = 100;
constexpr int FittingSize = 50;

constexpr auto AtLeast = LayoutRelation::GreaterThanOrEqual;
constexpr auto AtMost = LayoutRelation::LessThanOrEqual;

int huggingPriority(QSizePolicy::Policy policy)
{
    if (!(policy & QSizePolicy::GrowFlag))
        return StrongHugging;
    return policy & QSizePolicy::ExpandFlag ? WeakHugging : Hugging;
}

int leastExtent(int explicitLeast, int hint, int leastHint, QSizePolicy::Policy policy)
{
    if (explicitLeast > 0)
        return explicitLeast;
    return policy & QSizePolicy::ShrinkFlag ? std::max(leastHint, 0) : std::max(hint, leastHint);
}

std::string name(const std::weak_ptr<View>& weakView)
{
    const auto view = weakView.lock();
    return view ? "\"" + view->identifier() + "\"" : "";
}

std::string text(const LayoutConstraint& constraint)
{
    static constexpr const char* attributes[] = {".left",     ".right", ".top",    ".bottom",      ".leading",
                                                 ".trailing", ".width", ".height", ".lastBaseline"};
    static constexpr const char* relations[] = {" <= ", " = ", " >= "};
    std::ostringstream stream;
    stream << name(constraint.firstView) << attributes[static_cast<std::size_t>(constraint.firstAttribute)]
           << relations[static_cast<int>(constraint.relation) + 1];
    if (constraint.secondAttribute != LayoutAttribute::NotAnAttribute)
        stream << name(constraint.secondView) << attributes[static_cast<std::size_t>(constraint.secondAttribute)]
               << " * " << constraint.multiplier << " + ";
    stream << constraint.constant;
    return stream.str();
}

int ceiling(double value)
{
    return static_cast<int>(std::ceil(value - SimplexTableau::Tolerance));
}

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

} // namespace

ConstraintSystem::ConstraintSystem(QWidget* container, const std::vector<QWidget*>& widgets) : _container(container)
{
    for (QWidget* widget : widgets) {
        widget->ensurePolished();
        const QSizePolicy policy = widget->sizePolicy();
        const QSize hint = widget->sizeHint(), leastHint = widget->minimumSizeHint(), least = widget->minimumSize();
        const QSize limit(leastExtent(least.width(), hint.width(), leastHint.width(), policy.horizontalPolicy()),
                          leastExtent(least.height(), hint.height(), leastHint.height(), policy.verticalPolicy()));
        const QSize bounded = limit.boundedTo(widget->maximumSize());
        _items.push_back({widget, 0, 0, 0, 0, hint.expandedTo(bounded).boundedTo(widget->maximumSize()), bounded});
    }
}

ConstraintSystem::Solution ConstraintSystem::solve(const Request& request)
{
    solveWithHints(request);
    // The least width and the height that a text needs in it would together be far too much.
    if (!request.compressed && takeHeightsForWidths())
        solveWithHints(request);
    return solution(request);
}

void ConstraintSystem::solveWithHints(const Request& request)
{
    _solver = {};
    for (Item& item : _items) {
        item.leading = _solver.addVariable();
        item.top = _solver.addVariable();
        item.width = _solver.addVariable();
        item.height = _solver.addVariable();
    }
    addOwnSize(request);
    std::vector<std::pair<std::size_t, const LayoutConstraint*>> numbers;
    if (const auto view = viewForWidget(_container))
        for (const LayoutConstraint& constraint : view->native().constraints)
            if (const auto number = addConstraint(constraint))
                numbers.emplace_back(*number, &constraint);
    // Of views that could stretch or give way as well as each other, the last one does.
    for (std::size_t i = 0; i < _items.size(); ++i)
        addSizeOf(_items[i], 2 - double(i) / double(_items.size()));
    const std::vector<std::size_t> refused = _solver.solve();
    for (const auto& [number, constraint] : numbers)
        if (request.width && request.height && std::ranges::binary_search(refused, number))
            qWarning().noquote() << "Left out, since it contradicts other required constraints:"
                                 << text(*constraint).c_str();
}

// Heights that follow from the widths found replace the hints. True when one differs.
bool ConstraintSystem::takeHeightsForWidths()
{
    bool changed = false;
    for (Item& item : _items) {
        if (!item.widget->hasHeightForWidth())
            continue;
        const int height = item.widget->heightForWidth(rounded(_solver.value(item.width)));
        const int bounded = std::clamp(height, item.widget->minimumHeight(), item.widget->maximumHeight());
        changed = changed || bounded != item.hint.height();
        item.hint.setHeight(bounded);
        item.least.setHeight(bounded);
    }
    return changed;
}

// A size that is too small for the constraints cuts the content off rather than contradicts them.
void ConstraintSystem::addOwnSize(const Request& request)
{
    _width = _solver.addVariable();
    _height = _solver.addVariable();
    const auto add = [&](std::size_t variable, std::optional<int> extent) {
        const int priority = extent || request.compressed ? OwnSize : FittingSize;
        _solver.addConstraint({{variable, 1}}, AtLeast, 0);
        _solver.addConstraint({{variable, 1}}, LayoutRelation::Equal, extent.value_or(0), priority);
    };
    add(_width, request.width);
    add(_height, request.height);
}

std::optional<std::size_t> ConstraintSystem::addConstraint(const LayoutConstraint& constraint)
{
    auto sum = side(constraint.firstView, constraint.firstAttribute);
    const auto second = side(constraint.secondView, constraint.secondAttribute);
    if (!sum || !second)
        return std::nullopt;
    for (const LinearTerm& term : second->terms)
        sum->terms.push_back({term.variable, -constraint.multiplier * term.coefficient});
    const double constant = constraint.constant + constraint.multiplier * second->constant - sum->constant;
    return _solver.addConstraint(std::move(sum->terms), constraint.relation, constant, constraint.priority);
}

// Nothing for a view that is gone or is neither the container's nor one in it.
std::optional<LinearExpression> ConstraintSystem::side(const std::weak_ptr<View>& weakView,
                                                       LayoutAttribute attribute) const
{
    if (attribute == LayoutAttribute::NotAnAttribute)
        return LinearExpression{};
    const auto view = weakView.lock();
    QWidget* widget = view ? view->native().widget.data() : nullptr;
    if (!widget)
        return std::nullopt;
    if (widget == _container)
        return ownSide(attribute);
    const auto item = std::ranges::find(_items, widget, &Item::widget);
    return item != _items.end() ? std::optional(itemSide(*item, attribute)) : std::nullopt;
}

LinearExpression ConstraintSystem::ownSide(LayoutAttribute attribute) const
{
    switch (attribute) {
    case LayoutAttribute::Right:
    case LayoutAttribute::Trailing:
    case LayoutAttribute::Width:
        return {0, {{_width, 1}}};
    case LayoutAttribute::Bottom:
    case LayoutAttribute::Height:
    case LayoutAttribute::LastBaseline:
        return {0, {{_height, 1}}};
    default:
        return {};
    }
}

LinearExpression ConstraintSystem::itemSide(const Item& item, LayoutAttribute attribute) const
{
    const bool mirrored = _container->isRightToLeft();
    switch (attribute) {
    case LayoutAttribute::Left:
        return mirrored ? LinearExpression{0, {{_width, 1}, {item.leading, -1}, {item.width, -1}}}
                        : LinearExpression{0, {{item.leading, 1}}};
    case LayoutAttribute::Right:
        return mirrored ? LinearExpression{0, {{_width, 1}, {item.leading, -1}}}
                        : LinearExpression{0, {{item.leading, 1}, {item.width, 1}}};
    case LayoutAttribute::Leading:
        return {0, {{item.leading, 1}}};
    case LayoutAttribute::Trailing:
        return {0, {{item.leading, 1}, {item.width, 1}}};
    case LayoutAttribute::Top:
        return {0, {{item.top, 1}}};
    case LayoutAttribute::Bottom:
        return {0, {{item.top, 1}, {item.height, 1}}};
    case LayoutAttribute::Width:
        return {0, {{item.width, 1}}};
    case LayoutAttribute::Height:
        return {0, {{item.height, 1}}};
    case LayoutAttribute::LastBaseline: {
        const TextBaseline baseline = textBaseline(item.widget, item.hint.width());
        return {baseline.offset, {{item.top, 1}, {item.height, baseline.share}}};
    }
    case LayoutAttribute::NotAnAttribute:
        break;
    }
    return {};
}

void ConstraintSystem::addSizeOf(const Item& item, double weight)
{
    const QSizePolicy policy = item.widget->sizePolicy();
    const QSize most = item.widget->maximumSize();
    addExtent(item.width, item.hint.width(), item.least.width(), most.width(), policy.horizontalPolicy(), weight);
    addExtent(item.height, item.hint.height(), item.least.height(), most.height(), policy.verticalPolicy(), weight);
}

void ConstraintSystem::addExtent(std::size_t variable, int hint, int least, int most, QSizePolicy::Policy policy,
                                 double weight)
{
    _solver.addConstraint({{variable, 1}}, AtLeast, 0);
    if (least > 0)
        _solver.addConstraint({{variable, 1}}, AtLeast, least, WidgetLimit, weight);
    if (most < QWIDGETSIZE_MAX)
        _solver.addConstraint({{variable, 1}}, AtMost, most, WidgetLimit, weight);
    if (hint > least)
        _solver.addConstraint({{variable, 1}}, AtLeast, hint, CompressionResistance, weight);
    if (hint < most)
        _solver.addConstraint({{variable, 1}}, AtMost, hint, huggingPriority(policy), weight);
}

// Edges are rounded, not sizes, so that what meets in the solution meets on the screen.
ConstraintSystem::Solution ConstraintSystem::solution(const Request& request) const
{
    const QSize size(request.width.value_or(ceiling(_solver.value(_width))),
                     request.height.value_or(ceiling(_solver.value(_height))));
    std::vector<QRect> frames;
    for (const Item& item : _items) {
        const double leading = _solver.value(item.leading), trailing = leading + _solver.value(item.width);
        const int top = rounded(_solver.value(item.top));
        const int bottom = rounded(_solver.value(item.top) + _solver.value(item.height));
        const int left = _container->isRightToLeft() ? size.width() - rounded(trailing) : rounded(leading);
        frames.emplace_back(left, top, rounded(trailing) - rounded(leading), bottom - top);
    }
    return {size, std::move(frames)};
}

} // namespace platform::ui
