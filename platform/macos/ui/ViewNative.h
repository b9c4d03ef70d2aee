#pragma once

#include "platform/ui/View.h"

#import <AppKit/AppKit.h>
#include <memory>
#include <utility>
#include <vector>

namespace platform::ui {

// A view's NSView. Controls that keep more than it derive from this.
struct View::Native {
    explicit Native(NSView* theView) : view(theView) { view.translatesAutoresizingMaskIntoConstraints = NO; }
    virtual ~Native() = default;
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    // What an element that collapses does while it is hidden.
    void collapse(bool hidden);

    NSView* view;
    std::vector<std::pair<LayoutConstraint, NSLayoutConstraint*>> constraints;
    // Kept alive by their superview.
    std::vector<std::shared_ptr<View>> subviews;

    NSLayoutConstraint* noHeight = nil; // its own while it is hidden; nil for what keeps its place
    NSLayoutConstraint* gap = nil;      // above it; nil for none that collapses
    CGFloat gapHeight = 0;
};

// The view that stands for the NSView; null where there is none.
std::shared_ptr<View> viewForNative(NSView* view);

// Lets the superview, which is the view of the nearest ancestor that has one, keep the view alive.
void joinSuperview(const std::shared_ptr<View>& view);

// A view for an NSView. Ancestors first, so that they keep it alive. `T` is a control's class and `N` what it keeps.
template <class T, class N = View::Native>
std::shared_ptr<T> wrapView(NSView* view)
{
    auto wrapped = std::make_shared<T>(std::make_unique<N>(view));
    joinSuperview(wrapped);
    return wrapped;
}

// The same for an NSView that is no control.
std::shared_ptr<View> wrapContainer(NSView* view);

} // namespace platform::ui
