#include "tests/macos/SolvedWindow.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/layout/TextBaseline.h"

#include <algorithm>
#include <QLabel>
#include <utility>

using namespace platform::macos;
using platform::ui::LayoutAttribute;
using platform::ui::LayoutConstraint;
using platform::ui::LayoutRelation;
using platform::ui::LinearExpression;
using platform::ui::Rect;

namespace {

constexpr int widthHugging = 250; // the system's
constexpr int fittingSize = 50;   // the system's

using Identifiers = std::map<std::string, const Element*>;

void collect(const Element& element, Identifiers& all)
{
    if (*element.identifier)
        all.emplace(element.identifier, &element);
    for (const auto& child : element.children)
        collect(child, all);
}

const Element* findElement(const std::string& identifier)
{
    static const Identifiers all = [] {
        Identifiers collected;
        for (const auto& description : interfaceDescriptions()) {
            collect(description.root, collected);
            for (const auto& element : description.detached)
                collect(element, collected);
        }
        return collected;
    }();
    const auto found = all.find(identifier);
    return found == all.end() ? nullptr : found->second;
}

bool asksForSize(const Element& element)
{
    return hugsHeight(element.kind) || element.kind == ElementKind::RuleEditor;
}

Edge edgeOf(LayoutAttribute attribute)
{
    switch (attribute) {
    case LayoutAttribute::Left:
    case LayoutAttribute::Leading:
        return Edge::Leading;
    case LayoutAttribute::Right:
    case LayoutAttribute::Trailing:
        return Edge::Trailing;
    case LayoutAttribute::Top:
        return Edge::Top;
    case LayoutAttribute::Bottom:
        return Edge::Bottom;
    case LayoutAttribute::Width:
        return Edge::Width;
    case LayoutAttribute::Height:
        return Edge::Height;
    case LayoutAttribute::LastBaseline:
        return Edge::LastBaseline;
    case LayoutAttribute::NotAnAttribute:
        break;
    }
    return Edge::None;
}

template <class N>
LinearExpression side(const N& node, bool isHolder, Edge edge)
{
    switch (edge) {
    case Edge::Leading:
        return isHolder ? LinearExpression{} : LinearExpression{0, {{node.leading, 1}}};
    case Edge::Trailing:
        return isHolder ? LinearExpression{0, {{node.width, 1}}}
                        : LinearExpression{0, {{node.leading, 1}, {node.width, 1}}};
    case Edge::Top:
        return isHolder ? LinearExpression{} : LinearExpression{0, {{node.top, 1}}};
    case Edge::Bottom:
        return isHolder ? LinearExpression{0, {{node.height, 1}}}
                        : LinearExpression{0, {{node.top, 1}, {node.height, 1}}};
    case Edge::Width:
        return {0, {{node.width, 1}}};
    case Edge::Height:
        return {0, {{node.height, 1}}};
    case Edge::CenterY:
        return isHolder ? LinearExpression{0, {{node.height, 0.5}}}
                        : LinearExpression{0, {{node.top, 1}, {node.height, 0.5}}};
    case Edge::LastBaseline:
        return node.baseline;
    case Edge::None:
        break;
    }
    return {};
}

} // namespace

SolvedWindow::SolvedWindow(const char* name, FindView find)
    : _description(*findInterfaceDescription(name)),
      _find(std::move(find))
{
}

SolvedWindow::Node SolvedWindow::addNode()
{
    Node node{_solver.addVariable(), _solver.addVariable(), _solver.addVariable(), _solver.addVariable(), {}, {}};
    for (const auto extent : {node.width, node.height})
        _solver.addConstraint({{extent, 1}}, LayoutRelation::GreaterThanOrEqual, 0);
    node.baseline = {0, {{node.top, 1}, {node.height, 1}}};
    return node;
}

// What a control asks for, where its text stands, and how strongly it holds on to both.
void SolvedWindow::addContent(const Element& element, const View& peer, Node& node)
{
    auto& widget = *peer.native().widget;
    QSize size = widget.sizeHint();
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    if (element.kind == ElementKind::RuleEditor || (label && label->wordWrap()))
        size.setHeight(widget.height()); // as it shows what it holds now
    if (element.kind == ElementKind::Explanation)
        size.setWidth(static_cast<int>(element.width));
    const auto baseline = platform::ui::textBaseline(&widget, size.width());
    node.baseline = {baseline.offset, {{node.top, 1}, {node.height, baseline.share}}};
    node.askedHeight = size.height();
    const auto ask = [&](std::size_t extent, int points, int hugging) {
        _solver.addConstraint({{extent, 1}}, LayoutRelation::GreaterThanOrEqual, points, priority::resistance);
        _solver.addConstraint({{extent, 1}}, LayoutRelation::LessThanOrEqual, points, hugging);
    };
    if (element.kind != ElementKind::RuleEditor && (element.kind != ElementKind::TextField || element.width > 0))
        ask(node.width, size.width(), widthHugging);
    if (element.kind == ElementKind::RuleEditor)
        _solver.addConstraint({{node.height, 1}}, LayoutRelation::Equal, size.height());
    else
        ask(node.height, size.height(), hugsHeight(element.kind) ? priority::controlHugging : widthHugging);
}

SolvedWindow::Node SolvedWindow::addElement(const Element& element)
{
    Node node = addNode();
    const auto peer = *element.identifier ? _find(element.identifier) : nullptr;
    node.isCollapsed = collapses(element) && peer && peer->isHidden();
    if (node.isCollapsed)
        _solver.addConstraint({{node.height, 1}}, LayoutRelation::Equal, 0);
    else if (peer && asksForSize(element))
        addContent(element, *peer, node);
    // A stack has placed what it holds by itself.
    if (peer && !peer->constraints().empty()) {
        auto own = element;
        own.children.clear();
        addConstraints(constraintsOf(own), node, {});
        addStackedChildren(*peer, node);
    } else {
        std::vector<Node> children;
        for (const auto& child : element.children)
            children.push_back(addElement(child));
        addConstraints(constraintsOf(element), node, children);
    }
    if (*element.identifier)
        _nodes.insert_or_assign(element.identifier, node);
    return node;
}

SolvedWindow::Node SolvedWindow::addStacked(const std::shared_ptr<View>& view)
{
    const auto* const element = findElement(view->identifier());
    return element ? addElement(*element) : addNode();
}

std::vector<SolvedWindow::Node> SolvedWindow::addStackedChildren(const View& stack, const Node& holder)
{
    std::vector<std::shared_ptr<View>> views;
    std::vector<Node> nodes;
    const auto nodeOf = [&](const std::weak_ptr<View>& weak) -> std::pair<Node, bool> {
        const auto view = weak.lock();
        if (!view || view.get() == &stack)
            return {holder, true};
        const auto found = std::ranges::find(views, view);
        if (found != views.end())
            return {nodes[static_cast<std::size_t>(found - views.begin())], false};
        views.push_back(view);
        nodes.push_back(addStacked(view));
        return {nodes.back(), false};
    };
    for (const LayoutConstraint& each : stack.constraints()) {
        const auto [first, firstHolds] = nodeOf(each.firstView);
        const auto [second, secondHolds] = nodeOf(each.secondView);
        auto sum = side(first, firstHolds, edgeOf(each.firstAttribute));
        const auto other = side(second, secondHolds, edgeOf(each.secondAttribute));
        for (const auto& term : other.terms)
            sum.terms.push_back({term.variable, -term.coefficient});
        _solver.addConstraint(std::move(sum.terms), each.relation, each.constant + other.constant - sum.constant,
                              each.priority);
    }
    return nodes;
}

void SolvedWindow::addConstraints(const ElementConstraints& constraints, const Node& holder,
                                  const std::vector<Node>& children)
{
    const auto sideOf = [&](int number, Edge edge) {
        const bool isHolder = number == ElementConstraint::holder;
        return side(isHolder ? holder : children.at(static_cast<std::size_t>(number)), isHolder, edge);
    };
    for (const ElementConstraint& each : constraints) {
        auto sum = sideOf(each.first, each.firstEdge);
        const auto other = each.secondEdge == Edge::None ? LinearExpression{} : sideOf(each.second, each.secondEdge);
        for (const auto& term : other.terms)
            sum.terms.push_back({term.variable, -term.coefficient});
        const bool isGone = each.isGap && children.at(static_cast<std::size_t>(each.first)).isCollapsed;
        _solver.addConstraint(std::move(sum.terms), each.relation,
                              (isGone ? 0 : each.constant) + other.constant - sum.constant, each.priority);
    }
}

void SolvedWindow::holdSize(const Node& content)
{
    const auto hold = [&](std::size_t extent, std::optional<double> points) {
        _solver.addConstraint({{extent, 1}}, LayoutRelation::Equal, points.value_or(0),
                              points ? priority::windowSize : fittingSize);
    };
    hold(content.width, _width);
    hold(content.height, _height);
}

void SolvedWindow::solve()
{
    _solver = {};
    _nodes.clear();
    const Node content = addNode();
    addConstraints(constraintsOfWindow(), content, {addElement(_description.root)});
    holdSize(content);
    (void)_solver.solve();
    _width = _solver.value(content.width);
    _height = _solver.value(content.height);
    _frames.clear();
    for (const auto& [identifier, node] : _nodes)
        _frames.emplace(identifier,
                        Rect{_solver.value(node.leading), _solver.value(node.top), _solver.value(node.width),
                             _solver.value(node.height)});
}

double SolvedWindow::compression(const std::string& identifier) const
{
    const Node& node = _nodes.at(identifier);
    return node.askedHeight.value_or(0) - (node.askedHeight ? _solver.value(node.height) : 0);
}

std::vector<std::string> SolvedWindow::identifiers() const
{
    std::vector<std::string> all;
    for (const auto& [identifier, node] : _nodes)
        all.push_back(identifier);
    return all;
}
