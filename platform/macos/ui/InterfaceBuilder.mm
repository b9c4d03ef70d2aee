#include "platform/macos/ui/InterfaceBuilder.h"

#include "platform/Localization.h"
#include "platform/macos/ui/NativeControls.h"
#include "platform/macos/ui/ViewNative.h"

namespace platform::ui {

namespace {

using macos::Element;
using macos::ElementKind;

// Weaker than what any control wants for itself, and no stronger than the wish of a window to be small.
constexpr NSLayoutPriority hugging = 50;

struct Child {
    const Element& element;
    NSView* view;
};

void constrain(NSView* holder, NSView* first, NSLayoutAttribute attribute, NSLayoutRelation relation, NSView* second,
               NSLayoutAttribute secondAttribute, double constant, NSLayoutPriority priority = NSLayoutPriorityRequired)
{
    NSLayoutConstraint* const made = [NSLayoutConstraint constraintWithItem:first
                                                                  attribute:attribute
                                                                  relatedBy:relation
                                                                     toItem:second
                                                                  attribute:secondAttribute
                                                                 multiplier:1
                                                                   constant:constant];
    made.priority = priority;
    [holder addConstraint:made];
}

void equate(NSView* holder, NSView* first, NSLayoutAttribute attribute, NSView* second,
            NSLayoutAttribute secondAttribute, double constant)
{
    constrain(holder, first, attribute, NSLayoutRelationEqual, second, secondAttribute, constant);
}

bool hasBaseline(ElementKind kind)
{
    switch (kind) {
    case ElementKind::CheckBox:
    case ElementKind::Button:
    case ElementKind::PopUpButton:
    case ElementKind::Label:
    case ElementKind::TextField:
    case ElementKind::TimePicker:
        return true;
    default:
        return false;
    }
}

// What takes the whole width of a column.
bool fillsColumn(ElementKind kind)
{
    switch (kind) {
    case ElementKind::Row:
    case ElementKind::Column:
    case ElementKind::Stack:
    case ElementKind::RuleEditor:
    case ElementKind::TextView:
    case ElementKind::TableView:
        return true;
    default:
        return false;
    }
}

void setWidth(const Element& element, NSView* view)
{
    const bool isExact = element.kind == ElementKind::TextField;
    if (element.width > 0 && element.kind != ElementKind::Explanation)
        constrain(view, view, NSLayoutAttributeWidth,
                  isExact ? NSLayoutRelationEqual : NSLayoutRelationGreaterThanOrEqual, nil,
                  NSLayoutAttributeNotAnAttribute, element.width);
    if (element.height > 0)
        constrain(view, view, NSLayoutAttributeHeight, NSLayoutRelationGreaterThanOrEqual, nil,
                  NSLayoutAttributeNotAnAttribute, element.height);
}

void hugHeight(NSView* view)
{
    constrain(view, view, NSLayoutAttributeHeight, NSLayoutRelationEqual, nil, NSLayoutAttributeNotAnAttribute, 0,
              hugging);
}

// Beside each other, with texts on one baseline and the rest in the middle. A space takes what is left; a row without
// one ends where its last child does, or later.
void layOutRow(const Element& row, NSView* view, const std::vector<Child>& children)
{
    const Child* aligned = nullptr;
    NSView* previous = nil;
    bool hasSpace = false;
    for (const Child& child : children) {
        if (!previous)
            equate(view, child.view, NSLayoutAttributeLeading, view, NSLayoutAttributeLeading, row.indentation);
        else
            equate(view, child.view, NSLayoutAttributeLeading, previous, NSLayoutAttributeTrailing, row.spacing);
        constrain(view, child.view, NSLayoutAttributeTop, NSLayoutRelationGreaterThanOrEqual, view,
                  NSLayoutAttributeTop, 0);
        constrain(view, view, NSLayoutAttributeBottom, NSLayoutRelationGreaterThanOrEqual, child.view,
                  NSLayoutAttributeBottom, 0);
        if (!hasBaseline(child.element.kind)) {
            equate(view, child.view, NSLayoutAttributeCenterY, view, NSLayoutAttributeCenterY, 0);
        } else if (aligned) {
            equate(view, child.view, NSLayoutAttributeLastBaseline, aligned->view, NSLayoutAttributeLastBaseline, 0);
        } else {
            equate(view, child.view, NSLayoutAttributeCenterY, view, NSLayoutAttributeCenterY, 0);
            aligned = &child;
        }
        if (child.element.kind == ElementKind::Space) {
            hasSpace = true;
            constrain(child.view, child.view, NSLayoutAttributeWidth, NSLayoutRelationGreaterThanOrEqual, nil,
                      NSLayoutAttributeNotAnAttribute, 0);
            hugHeight(child.view);
        }
        previous = child.view;
    }
    constrain(view, view, NSLayoutAttributeTrailing,
              hasSpace ? NSLayoutRelationEqual : NSLayoutRelationGreaterThanOrEqual, previous,
              NSLayoutAttributeTrailing, 0);
    hugHeight(view);
}

void layOutColumn(const Element& column, NSView* view, const std::vector<Child>& children)
{
    NSView* previous = nil;
    for (const Child& child : children) {
        if (!previous)
            equate(view, child.view, NSLayoutAttributeTop, view, NSLayoutAttributeTop, 0);
        else
            equate(view, child.view, NSLayoutAttributeTop, previous, NSLayoutAttributeBottom, column.spacing);
        equate(view, child.view, NSLayoutAttributeLeading, view, NSLayoutAttributeLeading, column.indentation);
        constrain(view, view, NSLayoutAttributeTrailing,
                  fillsColumn(child.element.kind) ? NSLayoutRelationEqual : NSLayoutRelationGreaterThanOrEqual,
                  child.view, NSLayoutAttributeTrailing, 0);
        previous = child.view;
    }
    equate(view, view, NSLayoutAttributeBottom, previous, NSLayoutAttributeBottom, 0);
}

} // namespace

std::shared_ptr<View> buildElement(const Element& element, NamedViews& views)
{
    auto view = makeView(element);
    NSView* const native = view->native().view;
    setWidth(element, native);
    if (*element.accessibleName)
        view->setAccessibleName(localizedString(element.accessibleName));
    if (element.isHidden)
        view->setHidden(true);
    if (*element.identifier) {
        view->setIdentifier(element.identifier);
        views.emplace(element.identifier, view);
    }
    std::vector<Child> children;
    for (const Element& child : element.children) {
        const auto built = buildElement(child, views);
        view->addSubview(built);
        children.push_back({child, built->native().view});
    }
    if (children.empty())
        return view;
    if (element.kind == ElementKind::Column)
        layOutColumn(element, native, children);
    else
        layOutRow(element, native, children);
    return view;
}

} // namespace platform::ui
