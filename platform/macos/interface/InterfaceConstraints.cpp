#include "platform/macos/interface/InterfaceConstraints.h"

#include "platform/macos/interface/Metrics.h"

#include <algorithm>
#include <optional>

namespace platform::macos {

namespace {

using enum ElementKind;
using ui::LayoutRelation;

constexpr int holder = ElementConstraint::holder;

class Builder {
public:
    void relate(int first, Edge firstEdge, LayoutRelation relation, int second, Edge secondEdge, double constant = 0)
    {
        _made.push_back({first, firstEdge, relation, second, secondEdge, constant});
    }

    void equate(int first, Edge firstEdge, int second, Edge secondEdge, double constant = 0)
    {
        relate(first, firstEdge, LayoutRelation::Equal, second, secondEdge, constant);
    }

    // A child below the one before it.
    void follow(int child, double gap, bool collapses)
    {
        equate(child, Edge::Top, child - 1, Edge::Bottom, gap);
        _made.back().isGap = collapses;
    }

    void size(Edge extent, LayoutRelation relation, double points, int priority = ui::LayoutConstraint::Required)
    {
        _made.push_back({.firstEdge = extent, .relation = relation, .constant = points, .priority = priority});
    }

    // As high as the children ask for.
    void hugHeight() { size(Edge::Height, LayoutRelation::Equal, 0, priority::holderHugging); }

    void holdHeight(int child, double points)
    {
        _made.push_back({.first = child, .firstEdge = Edge::Height, .constant = points, .priority = priority::stretch});
    }

    ElementConstraints take() { return std::move(_made); }

private:
    ElementConstraints _made;
};

bool hasBaseline(ElementKind kind)
{
    switch (kind) {
    case CheckBox:
    case Button:
    case PopUpButton:
    case Label:
    case TextField:
    case TimePicker:
        return true;
    default:
        return false;
    }
}

// What takes the whole width of a column.
bool fillsColumn(ElementKind kind)
{
    switch (kind) {
    case Row:
    case Column:
    case Stack:
    case RuleEditor:
    case TextView:
    case TableView:
        return true;
    default:
        return false;
    }
}

// What takes the room that a row has left.
bool fillsRow(const Element& element)
{
    return element.kind == Space || element.kind == Column || (element.kind == TextField && element.width == 0);
}

bool stretchesInHeight(const Element& element)
{
    return element.kind == TextView || element.kind == TableView;
}

void sizeItself(const Element& element, Builder& builder)
{
    if (element.kind == Space)
        builder.size(Edge::Width, LayoutRelation::GreaterThanOrEqual, 0);
    if (element.width > 0 && element.kind != Explanation) {
        const bool isExact = element.kind == TextField;
        builder.size(Edge::Width, isExact ? LayoutRelation::Equal : LayoutRelation::GreaterThanOrEqual, element.width);
    }
    if (element.height > 0)
        builder.size(Edge::Height, LayoutRelation::GreaterThanOrEqual, element.height);
    if (element.kind == Row || element.kind == StackRow || element.kind == Stack || element.kind == Space)
        builder.hugHeight();
}

// Beside each other, with texts on one baseline and the rest in the middle. Columns have one width.
void layOutRow(const Element& row, Builder& builder)
{
    std::optional<int> aligned;
    std::optional<int> column;
    const int count = static_cast<int>(row.children.size());
    for (int child = 0; child < count; ++child) {
        const ElementKind kind = row.children[static_cast<std::size_t>(child)].kind;
        if (child == 0)
            builder.equate(child, Edge::Leading, holder, Edge::Leading, row.indentation);
        else
            builder.equate(child, Edge::Leading, child - 1, Edge::Trailing, row.spacing);
        builder.relate(child, Edge::Top, LayoutRelation::GreaterThanOrEqual, holder, Edge::Top);
        builder.relate(holder, Edge::Bottom, LayoutRelation::GreaterThanOrEqual, child, Edge::Bottom);
        if (hasBaseline(kind) && aligned) {
            builder.equate(child, Edge::LastBaseline, *aligned, Edge::LastBaseline);
        } else {
            builder.equate(child, Edge::CenterY, holder, Edge::CenterY);
            if (hasBaseline(kind))
                aligned = child;
        }
        if (kind == Column && column)
            builder.equate(child, Edge::Width, *column, Edge::Width);
        if (kind == Column)
            column = child;
    }
    const bool isFilled = std::ranges::any_of(row.children, fillsRow);
    builder.relate(holder, Edge::Trailing, isFilled ? LayoutRelation::Equal : LayoutRelation::GreaterThanOrEqual,
                   count - 1, Edge::Trailing);
}

// Below each other. Of several lists the last one takes what height is left.
void layOutColumn(const Element& column, Builder& builder)
{
    const int count = static_cast<int>(column.children.size());
    std::optional<int> list;
    for (int child = 0; child < count; ++child) {
        const Element& element = column.children[static_cast<std::size_t>(child)];
        if (child == 0)
            builder.equate(child, Edge::Top, holder, Edge::Top);
        else
            builder.follow(child, column.spacing, collapses(element));
        builder.equate(child, Edge::Leading, holder, Edge::Leading, column.indentation);
        builder.relate(holder, Edge::Trailing,
                       fillsColumn(element.kind) ? LayoutRelation::Equal : LayoutRelation::GreaterThanOrEqual, child,
                       Edge::Trailing);
        if (!stretchesInHeight(element))
            continue;
        if (list)
            builder.holdHeight(*list, column.children[static_cast<std::size_t>(*list)].height);
        list = child;
    }
    builder.equate(holder, Edge::Bottom, count - 1, Edge::Bottom);
}

} // namespace

ElementConstraints constraintsOf(const Element& element)
{
    Builder builder;
    sizeItself(element, builder);
    if (!element.children.empty()) {
        if (element.kind == Column)
            layOutColumn(element, builder);
        else
            layOutRow(element, builder);
    }
    return builder.take();
}

ElementConstraints constraintsOfWindow()
{
    Builder builder;
    builder.equate(0, Edge::Leading, holder, Edge::Leading, metrics::windowMargin);
    builder.equate(holder, Edge::Trailing, 0, Edge::Trailing, metrics::windowMargin);
    builder.equate(0, Edge::Top, holder, Edge::Top, metrics::windowMargin);
    builder.equate(holder, Edge::Bottom, 0, Edge::Bottom, metrics::windowMargin);
    return builder.take();
}

bool hugsHeight(ElementKind kind)
{
    switch (kind) {
    case CheckBox:
    case Button:
    case PopUpButton:
    case Label:
    case Explanation:
    case TextField:
    case Stepper:
    case TimePicker:
    case Spinner:
        return true;
    default:
        return false;
    }
}

} // namespace platform::macos
