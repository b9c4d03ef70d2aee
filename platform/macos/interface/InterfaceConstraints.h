#pragma once

#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/ui/LayoutConstraint.h"

#include <cstdint>
#include <vector>

// How the views of a description are placed, as plain values: an adapter makes the system's constraints of them, a test
// solves them.
namespace platform::macos {

enum class Edge : std::uint8_t { None, Leading, Trailing, Top, Bottom, Width, Height, CenterY, LastBaseline };

// first.edge relation second.edge + constant. Points.
struct ElementConstraint {
    static constexpr int holder = -1; // the element itself; children count from 0

    int first = holder;
    Edge firstEdge = Edge::None;
    ui::LayoutRelation relation = ui::LayoutRelation::Equal;
    int second = holder;
    Edge secondEdge = Edge::None; // None: the constant alone
    double constant = 0;
    int priority = ui::LayoutConstraint::Required;
    bool isGap = false; // before `first`: without the constant while that is hidden
};

using ElementConstraints = std::vector<ElementConstraint>;

// Priorities. A window holds its size at windowSize, which the system defines: what is to make it follow its content
// must be stronger, and what is to shrink no control weaker than a control's resistance, which is the system's too.
namespace priority {

inline constexpr int stretch = 250;    // a list that another one in its column lets stretch
inline constexpr int windowSize = 500; // the system's
inline constexpr int holderHugging = 600;
inline constexpr int controlHugging = 750;
inline constexpr int resistance = 750; // the system's

} // namespace priority

// The element's own size, and the places of its children in it.
ElementConstraints constraintsOf(const Element& element);
// Of a window's whole content, which is the holder, around the description's root.
ElementConstraints constraintsOfWindow();

// Whether the element takes no height, and none before itself, while it is hidden. Others keep their place.
inline bool collapses(const Element& element)
{
    return element.isHidden;
}

// Whether a view of this kind is never higher than its content asks for; it then hugs that at controlHugging.
bool hugsHeight(ElementKind kind);

} // namespace platform::macos
