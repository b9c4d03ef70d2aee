#include "platform/ui/TextView.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Colors.h"
#include "platform/macos/ui/Label.h"
#include "platform/macos/ui/TextViewNative.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform::ui {

namespace {

TextViewNative& textNative(const TextView& view)
{
    return static_cast<TextViewNative&>(view.native());
}

NSDictionary* nativeAttributes(const TextAttributes& attributes)
{
    NSMutableDictionary* const made = [NSMutableDictionary dictionary];
    if (attributes.font)
        made[NSFontAttributeName] = [NSFont userFixedPitchFontOfSize:0];
    if (attributes.foreground)
        made[NSForegroundColorAttributeName] = nativeColor(*attributes.foreground);
    return made;
}

// A text has few styles and very many stretches.
class NativeStyles {
public:
    NSDictionary* of(const TextAttributes& attributes)
    {
        const auto found = std::ranges::find(_made, attributes, &Style::first);
        if (found != _made.end())
            return found->second;
        return _made.emplace_back(attributes, nativeAttributes(attributes)).second;
    }

private:
    using Style = std::pair<TextAttributes, NSDictionary*>;
    std::vector<Style> _made;
};

NSAttributedString* attributedString(const StyledText& text)
{
    NSMutableAttributedString* const made =
        [[NSMutableAttributedString alloc] initWithString:foundation::string(text.string())];
    NativeStyles styles;
    NSUInteger location = 0;
    [made beginEditing];
    text.visitRuns(0, text.size(), [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
        const NSUInteger length = utf16Length(std::string_view(text.string()).substr(begin, end - begin));
        [made setAttributes:styles.of(attributes) range:NSMakeRange(location, length)];
        location += length;
    });
    [made endEditing];
    return made;
}

NSTextField* placeholderOf(TextViewNative& parts)
{
    if (parts.placeholder)
        return parts.placeholder;
    NSTextField* const label = newLabel(@"");
    label.alignment = NSTextAlignmentCenter;
    [label.cell setWraps:YES];
    [label.cell setScrollable:NO];
    label.translatesAutoresizingMaskIntoConstraints = NO;
    [parts.view addSubview:label];
    for (const NSLayoutAttribute attribute : {NSLayoutAttributeCenterX, NSLayoutAttributeCenterY}) {
        [parts.view addConstraint:[NSLayoutConstraint constraintWithItem:label
                                                               attribute:attribute
                                                               relatedBy:NSLayoutRelationEqual
                                                                  toItem:parts.view
                                                               attribute:attribute
                                                              multiplier:1
                                                                constant:0]];
    }
    [parts.view addConstraint:[NSLayoutConstraint constraintWithItem:label
                                                           attribute:NSLayoutAttributeWidth
                                                           relatedBy:NSLayoutRelationLessThanOrEqual
                                                              toItem:parts.view
                                                           attribute:NSLayoutAttributeWidth
                                                          multiplier:0.9
                                                            constant:0]];
    parts.placeholder = label;
    return label;
}

} // namespace

TextView::TextView(std::unique_ptr<Native> native) : View(std::move(native)) { }

std::shared_ptr<const StyledText> TextView::textStorage() const
{
    return textNative(*this).storage.text;
}

PreparedText prepareText(std::shared_ptr<const StyledText> text)
{
    @autoreleasepool {
        const std::shared_ptr<void> native(const_cast<void*>(CFBridgingRetain(attributedString(*text))), CFRelease);
        return {std::move(text), native};
    }
}

PreparedText TextView::setTextStorage(PreparedText text)
{
    TextViewNative& parts = textNative(*this);
    [parts.text().textStorage setAttributedString:(__bridge NSAttributedString*)text.native.get()];
    parts.text().selectedRange = NSMakeRange(0, 0);
    parts.placeholder.hidden = !text.text->empty();
    return std::exchange(parts.storage, std::move(text));
}

void TextView::setPlaceholderString(const std::string& text)
{
    TextViewNative& parts = textNative(*this);
    NSTextField* const label = placeholderOf(parts);
    label.stringValue = foundation::string(text);
    label.hidden = !parts.storage.text->empty();
}

std::string TextView::selectedText() const
{
    NSTextView* const text = textNative(*this).text();
    return foundation::string([text.string substringWithRange:text.selectedRange]);
}

void TextView::setSelectedTextAttributes(const SelectedTextAttributes& attributes)
{
    NSMutableDictionary* const made = [NSMutableDictionary dictionary];
    if (attributes.background)
        made[NSBackgroundColorAttributeName] = nativeColor(*attributes.background);
    if (attributes.foreground)
        made[NSForegroundColorAttributeName] = nativeColor(*attributes.foreground);
    textNative(*this).text().selectedTextAttributes = made;
}

void TextView::scrollToEndOfDocument()
{
    [textNative(*this).text() scrollToEndOfDocument:nil];
}

} // namespace platform::ui
