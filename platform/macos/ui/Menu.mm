#include "platform/ui/Menu.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/MenuItemNative.h"

@implementation BRVMenuItemTarget {
    platform::ui::MenuItem::Action _action;
    std::function<bool()> _validator;
}

- (instancetype)initWithIdentifier:(NSString*)identifier
{
    self = [super init];
    if (self)
        _identifier = [identifier copy];
    return self;
}

- (void)setAction:(const platform::ui::MenuItem::Action&)action
{
    _action = action;
}

- (void)setValidator:(const std::function<bool()>&)validator
{
    _validator = validator;
}

- (BOOL)isEnabled
{
    const auto kept = _validator;
    return !kept || kept();
}

- (BOOL)validateMenuItem:(NSMenuItem*)__unused item
{
    return [self isEnabled];
}

- (void)performAction:(id)__unused sender
{
    const auto kept = _action;
    if (kept)
        kept();
}

@end

namespace platform::ui {

BRVMenuItemTarget* targetOf(NSMenuItem* item, NSString* identifier)
{
    if (![item.representedObject isKindOfClass:BRVMenuItemTarget.class]) {
        item.representedObject = [[BRVMenuItemTarget alloc] initWithIdentifier:identifier];
        // One of the platform's own actions stays as it is.
        if (!item.action) {
            item.target = item.representedObject;
            item.action = @selector(performAction:);
        }
    }
    return item.representedObject;
}

MenuItem::MenuItem(std::unique_ptr<Native> native) : _native(std::move(native)) { }

MenuItem::~MenuItem() = default;

std::string MenuItem::identifier() const
{
    const id target = _native->item.representedObject;
    return [target isKindOfClass:BRVMenuItemTarget.class] ? foundation::string([target identifier]) : std::string();
}

std::string MenuItem::title() const
{
    return foundation::string(_native->item.title);
}

bool MenuItem::isHidden() const
{
    return _native->item.hidden;
}

void MenuItem::setHidden(bool hidden)
{
    _native->item.hidden = hidden;
}

std::string MenuItem::keyEquivalent() const
{
    return foundation::string(_native->item.keyEquivalent);
}

void MenuItem::setKeyEquivalent(const std::string& key)
{
    _native->item.keyEquivalent = foundation::string(key);
    _native->item.keyEquivalentModifierMask = NSEventModifierFlagCommand;
}

std::shared_ptr<MenuItem> MenuItem::next() const
{
    NSMenu* const menu = _native->item.menu;
    const NSInteger following = menu ? [menu indexOfItem:_native->item] + 1 : 0;
    if (following == 0 || following == menu.numberOfItems)
        return nullptr;
    return std::make_shared<MenuItem>(std::unique_ptr<Native>(new Native{[menu itemAtIndex:following]}));
}

void MenuItem::setAction(Action action)
{
    [targetOf(_native->item) setAction:action];
}

void MenuItem::setValidator(std::function<bool()> isEnabled)
{
    [targetOf(_native->item) setValidator:isEnabled];
}

bool MenuItem::isEnabled() const
{
    return [targetOf(_native->item) isEnabled];
}

} // namespace platform::ui
