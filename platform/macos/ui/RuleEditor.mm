#include "platform/ui/RuleEditor.h"

#include "platform/macos/interface/Metrics.h"
#include "platform/macos/ui/RuleEditorNative.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/PopUpButton.h"

#include <algorithm>

using platform::ui::ControlNative;
using platform::ui::DatePicker;
using platform::ui::PopUpButton;
using platform::ui::RuleCriterion;
using platform::ui::RuleDisplayValue;
using platform::ui::RuleEditor;
using platform::ui::RuleEditorNative;
using platform::ui::View;

// A criterion as the object that the toolkit keeps. Two for the same criterion are equal.
@interface BRVRuleCriterion : NSObject
@property (readonly) const std::shared_ptr<RuleCriterion>& criterion;
- (instancetype)initWithCriterion:(const std::shared_ptr<RuleCriterion>&)criterion;
@end

@implementation BRVRuleCriterion {
    std::shared_ptr<RuleCriterion> _held;
}

- (instancetype)initWithCriterion:(const std::shared_ptr<RuleCriterion>&)criterion
{
    self = [super init];
    if (self)
        _held = criterion;
    return self;
}

- (const std::shared_ptr<RuleCriterion>&)criterion
{
    return _held;
}

- (BOOL)isEqual:(id)other
{
    return [other isKindOfClass:BRVRuleCriterion.class] && [other criterion] == _held;
}

- (NSUInteger)hash
{
    return std::hash<std::shared_ptr<RuleCriterion>>()(_held);
}

@end

@interface BRVRuleEditorDelegate : NSObject <NSRuleEditorDelegate>
@property (assign) RuleEditor* editor; // null when it is gone
@property BOOL changesByProgram;
@end

namespace {

RuleEditorNative& ruleNative(const RuleEditor& editor)
{
    return static_cast<RuleEditorNative&>(editor.native());
}

std::shared_ptr<RuleCriterion> criterionOf(id object)
{
    return [object isKindOfClass:BRVRuleCriterion.class] ? [object criterion] : nullptr;
}

id objectForDisplayValue(const RuleDisplayValue& value)
{
    if (const auto* const text = std::get_if<std::string>(&value))
        return platform::foundation::string(*text);
    const auto* const view = std::get_if<std::shared_ptr<View>>(&value);
    if (!view || !*view)
        return @"";
    NSView* const shown = (*view)->native().view;
    shown.translatesAutoresizingMaskIntoConstraints = YES; // a rule editor goes by frames
    return shown;
}

// The row's own control has its value and its action; what stands for it here may be gone by now and is made anew then.
std::shared_ptr<View> viewOfRow(NSView* control)
{
    if (auto view = platform::ui::viewForNative(control))
        return view;
    std::shared_ptr<View> made;
    if ([control isKindOfClass:NSPopUpButton.class])
        made = std::make_shared<PopUpButton>(std::make_unique<ControlNative>(control));
    else if ([control isKindOfClass:NSDatePicker.class])
        made = std::make_shared<DatePicker>(std::make_unique<ControlNative>(control));
    control.translatesAutoresizingMaskIntoConstraints = YES; // as before
    return made;
}

RuleDisplayValue displayValueForObject(id object)
{
    if ([object isKindOfClass:NSView.class])
        return viewOfRow(object);
    return platform::foundation::string(static_cast<NSString*>([object description]));
}

void fitHeight(RuleEditorNative& native)
{
    const NSInteger visible =
        std::clamp<NSInteger>(native.editor().numberOfRows, 1, platform::macos::metrics::visibleRuleRows);
    native.height.constant = static_cast<CGFloat>(visible) * native.editor().rowHeight;
}

void change(const RuleEditor& editor, void (^changes)(NSRuleEditor*))
{
    RuleEditorNative& native = ruleNative(editor);
    BRVRuleEditorDelegate* const listener = native.listener;
    listener.changesByProgram = YES;
    changes(native.editor());
    listener.changesByProgram = NO;
    fitHeight(native);
}

} // namespace

@implementation BRVRuleEditorDelegate

- (std::shared_ptr<platform::ui::RuleEditorDelegate>)delegate
{
    return self.editor ? ruleNative(*self.editor).delegate.lock() : nullptr;
}

- (NSInteger)ruleEditor:(NSRuleEditor*)__unused editor
    numberOfChildrenForCriterion:(id)criterion
                     withRowType:(NSRuleEditorRowType)__unused rowType
{
    const auto delegate = [self delegate];
    return delegate ? delegate->numberOfChildrenForCriterion(*self.editor, criterionOf(criterion)) : 0;
}

- (id)ruleEditor:(NSRuleEditor*)__unused editor
           child:(NSInteger)index
    forCriterion:(id)criterion
     withRowType:(NSRuleEditorRowType)__unused rowType
{
    const auto child =
        [self delegate]->childForCriterion(*self.editor, static_cast<int>(index), criterionOf(criterion));
    return [[BRVRuleCriterion alloc] initWithCriterion:child];
}

- (id)ruleEditor:(NSRuleEditor*)__unused editor displayValueForCriterion:(id)criterion inRow:(NSInteger)row
{
    const auto value =
        [self delegate]->displayValueForCriterion(*self.editor, criterionOf(criterion), static_cast<int>(row));
    return objectForDisplayValue(value);
}

- (void)ruleEditorRowsDidChange:(NSNotification*)__unused notification
{
    if (!self.editor || self.changesByProgram)
        return;
    RuleEditorNative& native = ruleNative(*self.editor);
    fitHeight(native);
    [[BRVActionTarget targetOf:native.view] performAction:nil];
}

@end

namespace platform::ui {

RuleEditorNative::RuleEditorNative(NSView* theView)
    : ControlNative(theView),
      listener([[BRVRuleEditorDelegate alloc] init]),
      height([NSLayoutConstraint constraintWithItem:theView
                                          attribute:NSLayoutAttributeHeight
                                          relatedBy:NSLayoutRelationEqual
                                             toItem:nil
                                          attribute:NSLayoutAttributeNotAnAttribute
                                         multiplier:1
                                           constant:macos::metrics::ruleRowHeight])
{
    [theView addConstraint:height];
}

RuleEditorNative::~RuleEditorNative()
{
    listener.editor = nullptr;
    editor().delegate = nil;
}

RuleEditor::RuleEditor(std::unique_ptr<Native> native) : Control(std::move(native))
{
    ruleNative(*this).listener.editor = this;
    ruleNative(*this).editor().delegate = ruleNative(*this).listener;
}

void RuleEditor::setDelegate(std::weak_ptr<RuleEditorDelegate> delegate)
{
    ruleNative(*this).delegate = std::move(delegate);
    change(*this, ^(NSRuleEditor* editor) { [editor reloadCriteria]; });
}

int RuleEditor::numberOfRows() const
{
    return static_cast<int>(ruleNative(*this).editor().numberOfRows);
}

void RuleEditor::addRow()
{
    if (ruleNative(*this).delegate.expired())
        return;
    change(*this, ^(NSRuleEditor* editor) { [editor addRow:nil]; });
}

void RuleEditor::removeAllRows()
{
    if (numberOfRows() == 0)
        return;
    change(*this, ^(NSRuleEditor* editor) {
        const NSRange all = NSMakeRange(0, static_cast<NSUInteger>(editor.numberOfRows));
        [editor removeRowsAtIndexes:[NSIndexSet indexSetWithIndexesInRange:all] includeSubrows:YES];
    });
}

void RuleEditor::setCriteria(Criteria criteria, DisplayValues displayValues, int row)
{
    NSMutableArray* const objects = [NSMutableArray array];
    NSMutableArray* const values = [NSMutableArray array];
    for (const auto& criterion : criteria)
        [objects addObject:[[BRVRuleCriterion alloc] initWithCriterion:criterion]];
    change(*this, ^(NSRuleEditor* editor) {
        if (row == editor.numberOfRows)
            [editor insertRowAtIndex:row withType:NSRuleEditorRowTypeSimple asSubrowOfRow:-1 animate:NO];
        for (const RuleDisplayValue& value : displayValues)
            [values addObject:objectForDisplayValue(value)];
        [editor setCriteria:objects andDisplayValues:values forRowAtIndex:row];
    });
}

const RuleEditor::Criteria& RuleEditor::criteriaForRow(int row) const
{
    Criteria& criteria = ruleNative(*this).criteria;
    criteria.clear();
    for (const id object in [ruleNative(*this).editor() criteriaForRow:row])
        criteria.push_back(criterionOf(object));
    return criteria;
}

const RuleEditor::DisplayValues& RuleEditor::displayValuesForRow(int row) const
{
    DisplayValues& values = ruleNative(*this).displayValues;
    values.clear();
    for (const id object in [ruleNative(*this).editor() displayValuesForRow:row])
        values.push_back(displayValueForObject(object));
    return values;
}

} // namespace platform::ui
