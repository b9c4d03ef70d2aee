#include "platform/ui/View.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Accessibility.h"
#include "platform/macos/ui/ViewNative.h"

#include <algorithm>
#import <objc/runtime.h>
#include <utility>

namespace platform::ui {

namespace {

constexpr char viewKey = 0;

class Container final : public View {
public:
    explicit Container(std::unique_ptr<Native> native) : View(std::move(native)) { }
};

NSLayoutAttribute nativeAttribute(LayoutAttribute attribute)
{
    switch (attribute) {
    case LayoutAttribute::Left:
        return NSLayoutAttributeLeft;
    case LayoutAttribute::Right:
        return NSLayoutAttributeRight;
    case LayoutAttribute::Top:
        return NSLayoutAttributeTop;
    case LayoutAttribute::Bottom:
        return NSLayoutAttributeBottom;
    case LayoutAttribute::Leading:
        return NSLayoutAttributeLeading;
    case LayoutAttribute::Trailing:
        return NSLayoutAttributeTrailing;
    case LayoutAttribute::Width:
        return NSLayoutAttributeWidth;
    case LayoutAttribute::Height:
        return NSLayoutAttributeHeight;
    case LayoutAttribute::LastBaseline:
        return NSLayoutAttributeLastBaseline;
    case LayoutAttribute::NotAnAttribute:
        break;
    }
    return NSLayoutAttributeNotAnAttribute;
}

// Nil when a view of it is gone.
NSLayoutConstraint* nativeConstraint(const LayoutConstraint& constraint)
{
    const auto first = constraint.firstView.lock();
    const auto second = constraint.secondView.lock();
    if (!first || (!second && constraint.secondAttribute != LayoutAttribute::NotAnAttribute))
        return nil;
    NSLayoutConstraint* const made =
        [NSLayoutConstraint constraintWithItem:first->native().view
                                     attribute:nativeAttribute(constraint.firstAttribute)
                                     relatedBy:static_cast<NSLayoutRelation>(constraint.relation)
                                        toItem:second ? second->native().view : nil
                                     attribute:nativeAttribute(constraint.secondAttribute)
                                    multiplier:constraint.multiplier
                                      constant:constraint.constant];
    made.priority = static_cast<NSLayoutPriority>(constraint.priority);
    return made;
}

bool concerns(const LayoutConstraint& constraint, const std::shared_ptr<View>& view)
{
    return constraint.firstView.lock() == view || constraint.secondView.lock() == view;
}

} // namespace

std::shared_ptr<View> viewForNative(NSView* native)
{
    NSValue* const held = objc_getAssociatedObject(native, &viewKey);
    auto* const view = static_cast<View*>(held.pointerValue);
    return view ? view->weak_from_this().lock() : nullptr;
}

void joinSuperview(const std::shared_ptr<View>& view)
{
    if (const auto parent = view->superview())
        parent->native().subviews.push_back(view);
}

std::shared_ptr<View> wrapContainer(NSView* view)
{
    return wrapView<Container>(view);
}

void View::Native::collapse(bool hidden)
{
    gap.constant = hidden ? 0 : gapHeight;
    if (!noHeight)
        return;
    if (hidden)
        [view addConstraint:noHeight];
    else
        [view removeConstraint:noHeight];
}

std::shared_ptr<View> View::create()
{
    return wrapContainer([[NSView alloc] initWithFrame:NSZeroRect]);
}

View::View(std::unique_ptr<Native> native) : _native(std::move(native))
{
    objc_setAssociatedObject(_native->view, &viewKey, [NSValue valueWithPointer:this], OBJC_ASSOCIATION_RETAIN);
}

View::~View()
{
    objc_setAssociatedObject(_native->view, &viewKey, nil, OBJC_ASSOCIATION_RETAIN);
}

std::string View::identifier() const
{
    return foundation::string(_native->view.identifier);
}

void View::setIdentifier(const std::string& identifier)
{
    _native->view.identifier = foundation::string(identifier);
}

std::string View::accessibleName() const
{
    return foundation::string(accessibilityLabel(_native->view));
}

void View::setAccessibleName(const std::string& name)
{
    setAccessibilityLabel(_native->view, foundation::string(name));
}

bool View::isHidden() const
{
    return _native->view.hidden;
}

void View::setHidden(bool hidden)
{
    _native->view.hidden = hidden;
    _native->collapse(hidden);
}

std::shared_ptr<View> View::superview() const
{
    for (NSView* parent = _native->view.superview; parent; parent = parent.superview)
        if (auto view = viewForNative(parent))
            return view;
    return nullptr;
}

void View::addSubview(const std::shared_ptr<View>& view)
{
    view->removeFromSuperview();
    [_native->view addSubview:view->native().view];
    _native->subviews.push_back(view);
}

void View::removeFromSuperview()
{
    const auto self = shared_from_this();
    const auto parent = superview();
    [_native->view removeFromSuperview];
    if (!parent)
        return;
    std::erase(parent->native().subviews, self);
    // The toolkit has taken its side of them away.
    std::erase_if(parent->native().constraints, [&](const auto& each) { return concerns(each.first, self); });
}

bool View::isPlainContainer() const
{
    return [_native->view isMemberOfClass:NSView.class];
}

void View::addConstraints(const std::vector<LayoutConstraint>& constraints)
{
    for (const LayoutConstraint& constraint : constraints) {
        NSLayoutConstraint* const made = nativeConstraint(constraint);
        if (made)
            [_native->view addConstraint:made];
        _native->constraints.emplace_back(constraint, made);
    }
}

void View::removeConstraints(const std::vector<LayoutConstraint>& constraints)
{
    for (const LayoutConstraint& constraint : constraints) {
        const auto found =
            std::ranges::find(_native->constraints, constraint, [](const auto& each) { return each.first; });
        if (found == _native->constraints.end())
            continue;
        if (found->second)
            [_native->view removeConstraint:found->second];
        _native->constraints.erase(found);
    }
}

std::vector<LayoutConstraint> View::constraints() const
{
    std::vector<LayoutConstraint> values;
    for (const auto& [value, native] : _native->constraints)
        values.push_back(value);
    return values;
}

Rect View::frame() const
{
    const auto parent = superview();
    NSView* const outer = parent ? parent->native().view : _native->view.superview;
    const NSRect frame = outer ? [_native->view convertRect:_native->view.bounds toView:outer] : _native->view.frame;
    const double top = !outer || outer.flipped ? NSMinY(frame) : NSHeight(outer.bounds) - NSMaxY(frame);
    return {NSMinX(frame), top, NSWidth(frame), NSHeight(frame)};
}

void View::sizeToFit()
{
    NSView* const view = _native->view;
    const NSSize size = view.intrinsicContentSize;
    if (size.width >= 0 && size.height >= 0)
        view.frame = [view frameForAlignmentRect:NSMakeRect(0, 0, size.width, size.height)];
    else
        [view setFrameSize:view.fittingSize];
}

void View::layoutIfNeeded()
{
    [_native->view.window layoutIfNeeded];
    [_native->view layoutSubtreeIfNeeded];
}

} // namespace platform::ui
