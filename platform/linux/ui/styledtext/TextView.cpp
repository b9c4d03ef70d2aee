#include "platform/ui/TextView.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"

namespace platform::ui {

namespace {

StyledTextArea& areaOf(const View& view)
{
    return widgetOf<StyledTextView>(view).area();
}

} // namespace

TextView::TextView(std::unique_ptr<Native> native) : View(std::move(native)) { }

std::shared_ptr<const StyledText> TextView::textStorage() const
{
    return areaOf(*this).text();
}

PreparedText prepareText(std::shared_ptr<const StyledText> text)
{
    return {std::move(text), nullptr};
}

PreparedText TextView::setTextStorage(PreparedText text)
{
    return {areaOf(*this).setText(std::move(text.text)), nullptr};
}

void TextView::setPlaceholderString(const std::string& text)
{
    areaOf(*this).setPlaceholder(QString::fromStdString(text));
}

std::string TextView::selectedText() const
{
    return areaOf(*this).selectedText().toStdString();
}

void TextView::setSelectedTextAttributes(const SelectedTextAttributes& attributes)
{
    areaOf(*this).setSelectedTextAttributes(attributes);
}

void TextView::scrollToEndOfDocument()
{
    areaOf(*this).scrollToEnd();
}

} // namespace platform::ui
