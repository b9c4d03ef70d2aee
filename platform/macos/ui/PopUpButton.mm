#include "platform/ui/PopUpButton.h"

#include "platform/macos/ui/ControlNative.h"
#include "platform/macos/ui/ImageNative.h"
#include "platform/ui/Selection.h"

namespace platform::ui {

namespace {

// Past the button's own call, which would take away another item of the same title.
void appendItem(NSPopUpButton* button, const std::string& title)
{
    [button.menu addItem:title.empty() ? NSMenuItem.separatorItem
                                       : [[NSMenuItem alloc] initWithTitle:foundation::string(title)
                                                                    action:nil
                                                             keyEquivalent:@""]];
}

NSMenuItem* itemAt(const View& view, int index)
{
    NSPopUpButton* const button = nativeOf<NSPopUpButton>(view);
    return index >= 0 && index < button.numberOfItems ? [button itemAtIndex:index] : nil;
}

} // namespace

std::shared_ptr<PopUpButton> PopUpButton::create(Items items)
{
    NSPopUpButton* const button = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
    button.bezelStyle = NSBezelStyleRoundRect;
    for (const std::string& title : *items)
        appendItem(button, title);
    [button selectItemAtIndex:0];
    return wrapView<PopUpButton, ControlNative>(button);
}

PopUpButton::PopUpButton(std::unique_ptr<Native> native) : Control(std::move(native)) { }

int PopUpButton::numberOfItems() const
{
    return static_cast<int>(nativeOf<NSPopUpButton>(*this).numberOfItems);
}

int PopUpButton::indexOfSelectedItem() const
{
    return static_cast<int>(nativeOf<NSPopUpButton>(*this).indexOfSelectedItem);
}

void PopUpButton::selectItemAtIndex(int index)
{
    [nativeOf<NSPopUpButton>(*this) selectItemAtIndex:itemAt(*this, index) ? index : -1];
}

std::string PopUpButton::itemTitleAtIndex(int index) const
{
    return foundation::string(itemAt(*this, index).title);
}

void PopUpButton::setItemTitleAtIndex(int index, const std::string& title)
{
    itemAt(*this, index).title = foundation::string(title);
    [nativeOf<NSPopUpButton>(*this) synchronizeTitleAndSelectedItem];
}

void PopUpButton::addItem(const std::string& title, const std::shared_ptr<Image>& image)
{
    NSPopUpButton* const button = nativeOf<NSPopUpButton>(*this);
    NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:foundation::string(title) action:nil keyEquivalent:@""];
    item.image = image ? image->native().image : nil;
    [button.menu addItem:item];
    if (button.numberOfItems == 1)
        [button selectItemAtIndex:0];
}

void PopUpButton::removeItemAtIndex(int index)
{
    if (!itemAt(*this, index))
        return;
    NSPopUpButton* const button = nativeOf<NSPopUpButton>(*this);
    const NSInteger selected = button.indexOfSelectedItem;
    [button removeItemAtIndex:index];
    [button selectItemAtIndex:selectionAfterRemoval(static_cast<int>(selected), index, numberOfItems())];
}

} // namespace platform::ui
