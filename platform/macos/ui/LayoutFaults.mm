#include "platform/ui/LayoutFaults.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/ViewNative.h"

namespace platform::ui {

namespace {

std::string nameOf(NSView* view)
{
    NSString* const name = view.identifier ? view.identifier : NSStringFromClass(view.class);
    return foundation::string(name);
}

bool isOfOneLine(NSView* view)
{
    return [view isKindOfClass:NSButton.class]
        || ([view isKindOfClass:NSTextField.class] && !static_cast<NSTextField*>(view).editable
            && ![static_cast<NSTextField*>(view).cell wraps]);
}

// What a control has inside is the system's.
bool isOurs(NSView* view)
{
    return ![view isKindOfClass:NSControl.class] && ![view isKindOfClass:NSScrollView.class];
}

void collect(NSView* view, std::vector<std::string>& faults)
{
    if (view.hidden)
        return;
    if (view.hasAmbiguousLayout)
        faults.push_back(nameOf(view) + " has no certain place");
    const CGFloat width = [view alignmentRectForFrame:view.frame].size.width;
    if (isOfOneLine(view) && width + 0.5 < view.intrinsicContentSize.width)
        faults.push_back(nameOf(view) + " cuts its text off");
    if (!isOurs(view))
        return;
    for (NSView* const child in view.subviews)
        collect(child, faults);
}

} // namespace

std::vector<std::string> layoutFaults(const std::shared_ptr<View>& view)
{
    std::vector<std::string> faults;
    collect(view->native().view, faults);
    return faults;
}

} // namespace platform::ui
