#pragma once

#include "platform/macos/ui/ViewNative.h"
#include "platform/ui/TextView.h"

namespace platform::ui {

struct TextViewNative : View::Native {
    // A scroll view around an NSTextView.
    using Native::Native;

    NSTextView* text() const { return static_cast<NSTextView*>(static_cast<NSScrollView*>(view).documentView); }

    NSTextField* placeholder = nil; // in the middle of the view, once there is one
    PreparedText storage{std::make_shared<const StyledText>(), nullptr};
};

} // namespace platform::ui
