#include "platform/macos/ui/InterfaceBuilder.h"

#include "platform/Localization.h"
#include "platform/macos/ui/NativeControls.h"
#include "platform/macos/ui/ViewNative.h"

namespace platform::ui {

namespace {

using macos::Edge;
using macos::Element;
using macos::ElementConstraint;

NSLayoutAttribute nativeAttribute(Edge edge)
{
    switch (edge) {
    case Edge::Leading:
        return NSLayoutAttributeLeading;
    case Edge::Trailing:
        return NSLayoutAttributeTrailing;
    case Edge::Top:
        return NSLayoutAttributeTop;
    case Edge::Bottom:
        return NSLayoutAttributeBottom;
    case Edge::Width:
        return NSLayoutAttributeWidth;
    case Edge::Height:
        return NSLayoutAttributeHeight;
    case Edge::CenterY:
        return NSLayoutAttributeCenterY;
    case Edge::LastBaseline:
        return NSLayoutAttributeLastBaseline;
    case Edge::None:
        break;
    }
    return NSLayoutAttributeNotAnAttribute;
}

void takeGap(View& view, NSLayoutConstraint* gap)
{
    View::Native& native = view.native();
    native.gap = gap;
    native.gapHeight = gap.constant;
    native.collapse(view.isHidden());
}

void letCollapse(View& view)
{
    View::Native& native = view.native();
    native.noHeight = [NSLayoutConstraint constraintWithItem:native.view
                                                   attribute:NSLayoutAttributeHeight
                                                   relatedBy:NSLayoutRelationEqual
                                                      toItem:nil
                                                   attribute:NSLayoutAttributeNotAnAttribute
                                                  multiplier:1
                                                    constant:0];
    view.setHidden(true);
}

} // namespace

void constrain(NSView* holder, NSArray<NSView*>* children, const macos::ElementConstraints& constraints)
{
    const auto viewOf = [&](int number) {
        return number == ElementConstraint::holder ? holder : children[static_cast<NSUInteger>(number)];
    };
    for (const ElementConstraint& each : constraints) {
        const bool isSize = each.secondEdge == Edge::None;
        NSLayoutConstraint* const made =
            [NSLayoutConstraint constraintWithItem:viewOf(each.first)
                                         attribute:nativeAttribute(each.firstEdge)
                                         relatedBy:static_cast<NSLayoutRelation>(each.relation)
                                            toItem:isSize ? nil : viewOf(each.second)
                                         attribute:nativeAttribute(each.secondEdge)
                                        multiplier:1
                                          constant:each.constant];
        made.priority = static_cast<NSLayoutPriority>(each.priority);
        [holder addConstraint:made];
        if (each.isGap)
            takeGap(*viewForNative(viewOf(each.first)), made);
    }
}

std::shared_ptr<View> buildElement(const Element& element, NamedViews& views)
{
    auto view = makeView(element);
    NSView* const native = view->native().view;
    if (macos::hugsHeight(element.kind))
        [native setContentHuggingPriority:macos::priority::controlHugging
                           forOrientation:NSLayoutConstraintOrientationVertical];
    if (*element.accessibleName)
        view->setAccessibleName(localizedString(element.accessibleName));
    if (macos::collapses(element))
        letCollapse(*view);
    if (*element.identifier) {
        view->setIdentifier(element.identifier);
        views.emplace(element.identifier, view);
    }
    NSMutableArray<NSView*>* const children = [NSMutableArray array];
    for (const Element& child : element.children) {
        const auto built = buildElement(child, views);
        view->addSubview(built);
        [children addObject:built->native().view];
    }
    constrain(native, children, macos::constraintsOf(element));
    return view;
}

} // namespace platform::ui
