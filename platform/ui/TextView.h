#pragma once

#include "platform/StyledText.h"
#include "platform/ui/View.h"

#include <memory>
#include <optional>
#include <string>

namespace platform::ui {

// How selected text differs from other text. What is absent stays as it is.
struct SelectedTextAttributes {
    std::optional<Color> background;
    std::optional<Color> foreground;
};

// A text with what the platform needs to show it.
struct PreparedText {
    std::shared_ptr<const StyledText> text;
    std::shared_ptr<void> native; // null where the platform shows the text as it is
};

// Takes a while for a long text, which must not change any more. Any thread.
PreparedText prepareText(std::shared_ptr<const StyledText> text);

// A scrolling view of text that the user reads, selects, copies and searches, but does not edit.
class TextView : public View {
public:
    explicit TextView(std::unique_ptr<Native> native);

    // Never null.
    std::shared_ptr<const StyledText> textStorage() const;
    // Takes the place of the whole text, however long, in a moment; nothing is selected then. The text before is
    // returned, since letting go of a long one takes time.
    PreparedText setTextStorage(PreparedText text);

    // Shown while the text is empty, and no part of it.
    void setPlaceholderString(const std::string& text);

    std::string selectedText() const;
    void setSelectedTextAttributes(const SelectedTextAttributes& attributes);
    void scrollToEndOfDocument();
};

} // namespace platform::ui
