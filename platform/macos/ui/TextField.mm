#include "platform/ui/TextField.h"

#include "platform/IntegerText.h"
#include "platform/macos/ui/Colors.h"
#include "platform/macos/ui/EntryField.h"
#include "platform/macos/ui/TextFieldNative.h"

using platform::ui::TextCommand;
using platform::ui::TextField;
using platform::ui::TextFieldDelegate;
using platform::ui::TextFieldNative;

namespace {

TextCommand commandForSelector(SEL selector)
{
    if (selector == @selector(moveUp:))
        return TextCommand::MoveUp;
    if (selector == @selector(moveDown:))
        return TextCommand::MoveDown;
    if (selector == @selector(insertNewline:))
        return TextCommand::InsertNewline;
    if (selector == @selector(cancelOperation:))
        return TextCommand::CancelOperation;
    return TextCommand::Other;
}

} // namespace

// Hears of the field's edits. It may outlive the field that it listens for.
@interface BRVTextFieldDelegate : NSObject <NSTextFieldDelegate>
@property (assign) TextField* field;
@end

@implementation BRVTextFieldDelegate

- (std::shared_ptr<TextFieldDelegate>)delegate
{
    return self.field ? static_cast<TextFieldNative&>(self.field->native()).delegate.lock() : nullptr;
}

- (void)controlTextDidChange:(NSNotification*)__unused notification
{
    if (const auto delegate = [self delegate])
        delegate->controlTextDidChange(*self.field);
}

- (BOOL)control:(NSControl*)__unused control textView:(NSTextView*)__unused textView doCommandBySelector:(SEL)selector
{
    const auto delegate = [self delegate];
    return delegate && delegate->doCommand(*self.field, commandForSelector(selector));
}

- (BOOL)allowsChangeInRange:(NSRange)range replacement:(NSString*)replacement
{
    const auto delegate = [self delegate];
    return !delegate
        || delegate->shouldChangeText(*self.field, {range.location, range.length},
                                      platform::foundation::string(replacement));
}

@end

namespace platform::ui {

TextFieldNative::TextFieldNative(NSView* theView)
    : ControlNative(theView),
      listener([[BRVTextFieldDelegate alloc] init])
{
}

TextFieldNative::~TextFieldNative()
{
    listener.field = nullptr;
    if ([view isKindOfClass:BRVEntryField.class])
        static_cast<BRVEntryField*>(view).judge = nil;
    static_cast<NSTextField*>(view).delegate = nil;
}

TextField::TextField(std::unique_ptr<Native> native) : Control(std::move(native))
{
    BRVTextFieldDelegate* const listener = static_cast<TextFieldNative&>(this->native()).listener;
    listener.field = this;
    nativeOf<NSTextField>(*this).delegate = listener;
    if (![this->native().view isKindOfClass:BRVEntryField.class])
        return;
    nativeOf<BRVEntryField>(*this).judge = ^BOOL(NSRange range, NSString* replacement) {
        return [listener allowsChangeInRange:range replacement:replacement];
    };
}

std::string TextField::stringValue() const
{
    return foundation::string(nativeOf<NSTextField>(*this).stringValue);
}

void TextField::setStringValue(const std::string& text)
{
    nativeOf<NSTextField>(*this).stringValue = foundation::string(text);
}

std::size_t TextField::length() const
{
    return nativeOf<NSTextField>(*this).stringValue.length;
}

std::int64_t TextField::integerValue() const
{
    return integerOfText(stringValue());
}

void TextField::setIntegerValue(std::int64_t value)
{
    setStringValue(std::to_string(value));
}

void TextField::setTextColor(const Color& color)
{
    nativeOf<NSTextField>(*this).textColor = nativeColor(color);
}

void TextField::setDelegate(std::weak_ptr<TextFieldDelegate> delegate)
{
    static_cast<TextFieldNative&>(native()).delegate = std::move(delegate);
}

} // namespace platform::ui
