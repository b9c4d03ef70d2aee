#pragma once

#include "platform/macos/ui/ControlNative.h"
#include "platform/ui/RuleEditor.h"

@class BRVRuleEditorDelegate;

namespace platform::ui {

struct RuleEditorNative : ControlNative {
    // A scroll view around an NSRuleEditor.
    explicit RuleEditorNative(NSView* theView);
    ~RuleEditorNative() override;

    NSRuleEditor* editor() const { return static_cast<NSRuleEditor*>(static_cast<NSScrollView*>(view).documentView); }

    std::weak_ptr<RuleEditorDelegate> delegate;
    BRVRuleEditorDelegate* listener;
    NSLayoutConstraint* height;
    // What was asked for last.
    RuleEditor::Criteria criteria;
    RuleEditor::DisplayValues displayValues;
};

} // namespace platform::ui
