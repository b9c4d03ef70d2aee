#include "platform/macos/ui/NativeControls.h"

#include "platform/Localization.h"
#include "platform/macos/interface/Metrics.h"
#include "platform/macos/interface/PlainTitle.h"
#include "platform/macos/ui/EntryField.h"
#include "platform/macos/ui/Label.h"
#include "platform/macos/ui/ProgressIndicatorNative.h"
#include "platform/macos/ui/RuleEditorNative.h"
#include "platform/macos/ui/TableViewNative.h"
#include "platform/macos/ui/TextFieldNative.h"
#include "platform/macos/ui/TextViewNative.h"
#include "platform/macos/ui/TimePicker.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/ProgressIndicator.h"
#include "platform/ui/Stepper.h"

// A container of a class of its own, so that a stack within another one is no plain container.
@interface BRVStackContainer : NSView
@end

@implementation BRVStackContainer
@end

namespace platform::ui {

namespace {

using macos::Element;
using macos::ElementKind;

NSString* text(const char* key)
{
    return foundation::string(macos::plainTitle(localizedString(key)));
}

NSButton* newButton(const Element& element)
{
    NSButton* const button = [[NSButton alloc] initWithFrame:NSZeroRect];
    button.bezelStyle = NSBezelStyleRounded;
    [button setButtonType:NSButtonTypeMomentaryPushIn];
    button.title = text(element.title);
    button.font = [NSFont systemFontOfSize:NSFont.systemFontSize];
    if (element.isDefault)
        button.keyEquivalent = @"\r";
    if (element.isCancel)
        button.keyEquivalent = @"\033";
    return button;
}

NSPopUpButton* newPopUpButton(const Element& element)
{
    NSPopUpButton* const button = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
    for (const char* const title : element.items)
        [button.menu addItemWithTitle:text(title) action:nil keyEquivalent:@""];
    [button selectItemAtIndex:element.items.empty() ? -1 : 0];
    return button;
}

NSTextField* newLabelFor(const Element& element)
{
    NSTextField* const label = newLabel(text(element.title));
    label.selectable = element.isSelectable;
    return label;
}

NSTextField* newExplanation(const Element& element)
{
    NSTextField* const label = newLabelFor(element);
    [label.cell setWraps:YES];
    [label.cell setScrollable:NO];
    label.preferredMaxLayoutWidth = element.width;
    return label;
}

NSTextField* newEntryField(const Element& element)
{
    NSTextField* const field = [[BRVEntryField alloc] initWithFrame:NSZeroRect];
    field.alignment = element.isText ? NSTextAlignmentNatural : NSTextAlignmentRight;
    [field.cell setUsesSingleLineMode:YES];
    return field;
}

NSStepper* newStepper()
{
    NSStepper* const stepper = [[NSStepper alloc] initWithFrame:NSZeroRect];
    stepper.minValue = 1;
    stepper.maxValue = 999;
    stepper.increment = 1;
    stepper.valueWraps = NO;
    return stepper;
}

NSScrollView* newScrollView(NSView* document, NSBorderType border)
{
    NSScrollView* const scroller = [[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)];
    scroller.borderType = border;
    scroller.hasVerticalScroller = YES;
    scroller.autohidesScrollers = YES;
    document.frame = scroller.contentView.bounds;
    document.autoresizingMask = NSViewWidthSizable;
    scroller.documentView = document;
    return scroller;
}

NSScrollView* newRuleEditor()
{
    NSRuleEditor* const editor = [[NSRuleEditor alloc] initWithFrame:NSZeroRect];
    editor.nestingMode = NSRuleEditorNestingModeList;
    editor.rowHeight = macos::metrics::ruleRowHeight;
    editor.editable = YES;
    editor.canRemoveAllRows = NO;
    NSScrollView* const scroller = newScrollView(editor, NSNoBorder);
    scroller.drawsBackground = NO;
    return scroller;
}

NSScrollView* newTextView()
{
    NSTextView* const view = [[NSTextView alloc] initWithFrame:NSZeroRect];
    view.editable = NO;
    view.selectable = YES;
    view.richText = YES;
    view.usesFindBar = YES;
    view.verticallyResizable = YES;
    view.horizontallyResizable = NO;
    view.maxSize = NSMakeSize(CGFLOAT_MAX, CGFLOAT_MAX);
    view.textContainer.widthTracksTextView = YES;
    view.layoutManager.allowsNonContiguousLayout = YES;
    return newScrollView(view, NSBezelBorder);
}

NSScrollView* newTableView(const Element& element)
{
    NSTableView* const table = [[NSTableView alloc] initWithFrame:NSZeroRect];
    table.usesAlternatingRowBackgroundColors = YES;
    table.allowsMultipleSelection = NO;
    table.columnAutoresizingStyle = NSTableViewUniformColumnAutoresizingStyle;
    for (const char* const identifier : element.items) {
        NSTableColumn* const column = [[NSTableColumn alloc] initWithIdentifier:foundation::string(identifier)];
        column.headerCell.stringValue = text(identifier);
        column.editable = NO;
        [table addTableColumn:column];
    }
    return newScrollView(table, NSBezelBorder);
}

NSProgressIndicator* newSpinner()
{
    NSProgressIndicator* const indicator = [[NSProgressIndicator alloc] initWithFrame:NSZeroRect];
    indicator.style = NSProgressIndicatorStyleSpinning;
    indicator.controlSize = NSControlSizeSmall;
    indicator.displayedWhenStopped = NO;
    return indicator;
}

} // namespace

std::shared_ptr<View> makeView(const Element& element)
{
    switch (element.kind) {
    case ElementKind::Row:
    case ElementKind::Column:
    case ElementKind::Space:
        return View::create();
    case ElementKind::StackRow:
    case ElementKind::Stack:
        return wrapContainer([[BRVStackContainer alloc] initWithFrame:NSZeroRect]);
    case ElementKind::CheckBox:
        return CheckBox::create(macos::plainTitle(localizedString(element.title)));
    case ElementKind::Button:
        return wrapView<Button, ControlNative>(newButton(element));
    case ElementKind::PopUpButton:
        return wrapView<PopUpButton, ControlNative>(newPopUpButton(element));
    case ElementKind::Label:
        return wrapView<TextField, TextFieldNative>(newLabelFor(element));
    case ElementKind::Explanation:
        return wrapView<TextField, TextFieldNative>(newExplanation(element));
    case ElementKind::TextField:
        return wrapView<TextField, TextFieldNative>(newEntryField(element));
    case ElementKind::Stepper:
        return wrapView<Stepper, ControlNative>(newStepper());
    case ElementKind::TimePicker:
        return DatePicker::create();
    case ElementKind::RuleEditor:
        return wrapView<RuleEditor, RuleEditorNative>(newRuleEditor());
    case ElementKind::TextView:
        return wrapView<TextView, TextViewNative>(newTextView());
    case ElementKind::TableView:
        return wrapView<TableView, TableViewNative>(newTableView(element));
    case ElementKind::Spinner:
        return wrapView<ProgressIndicator, ProgressIndicatorNative>(newSpinner());
    }
    return nullptr;
}

} // namespace platform::ui
