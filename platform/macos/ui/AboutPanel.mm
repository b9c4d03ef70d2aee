#include "platform/macos/ui/AboutPanel.h"

#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Label.h"
#include "platform/macos/ui/ViewNative.h"

namespace platform::ui {

namespace {

constexpr CGFloat pictureSize = 64;

NSString* aboutText(const char* key, const std::string& argument)
{
    return foundation::string(formatString(localizedString(key), {argument}).value_or(argument));
}

NSImageView* newPicture()
{
    NSImageView* const picture = [[NSImageView alloc] initWithFrame:NSMakeRect(0, 0, pictureSize, pictureSize)];
    picture.image = NSApp.applicationIconImage;
    for (const auto attribute : {NSLayoutAttributeWidth, NSLayoutAttributeHeight}) {
        [picture addConstraint:[NSLayoutConstraint constraintWithItem:picture
                                                            attribute:attribute
                                                            relatedBy:NSLayoutRelationEqual
                                                               toItem:nil
                                                            attribute:NSLayoutAttributeNotAnAttribute
                                                           multiplier:1
                                                             constant:pictureSize]];
    }
    return picture;
}

NSPanel* newPanel(NSString* title, NSArray<NSView*>* rows)
{
    NSPanel* const panel = [[NSPanel alloc] initWithContentRect:NSZeroRect
                                                      styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                                        backing:NSBackingStoreBuffered
                                                          defer:YES];
    panel.title = title;
    panel.releasedWhenClosed = NO;
    panel.hidesOnDeactivate = NO;
    NSStackView* const column = [NSStackView stackViewWithViews:rows];
    column.orientation = NSUserInterfaceLayoutOrientationVertical;
    column.alignment = NSLayoutAttributeCenterX;
    column.spacing = 10;
    column.edgeInsets = NSEdgeInsetsMake(24, 60, 24, 60);
    panel.contentView = column;
    [panel setContentSize:column.fittingSize];
    return panel;
}

} // namespace

// The standard panel has no room for buttons.
void orderFrontPanelAboutVersion(const std::string& version, std::vector<std::shared_ptr<Button>> links)
{
    static NSPanel* panel = nil;
    static std::vector<std::shared_ptr<Button>> shown; // the panel's
    if (!panel.visible) {
        shown = std::move(links);
        NSString* const known = NSRunningApplication.currentApplication.localizedName;
        NSString* const name = known ? known : @"Brevane";
        NSTextField* const title = newLabel(name);
        title.font = [NSFont boldSystemFontOfSize:NSFont.systemFontSize * 1.4];
        NSMutableArray<NSView*>* const rows =
            [NSMutableArray arrayWithObjects:newPicture(), title, newLabel(aboutText("Version %@", version)), nil];
        for (const auto& link : shown)
            [rows addObject:link->native().view];
        panel = newPanel(aboutText("About %@", foundation::string(name)), rows);
        [panel center];
    }
    [panel makeKeyAndOrderFront:nil];
}

} // namespace platform::ui
