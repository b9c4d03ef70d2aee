#pragma once

#include "platform/Color.h"
#include "platform/ui/Control.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace platform::ui {

enum class TextCommand { MoveUp, MoveDown, InsertNewline, CancelOperation, Other };

// Positions and lengths in UTF-16 code units.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;
};

class TextField;

class TextFieldDelegate {
public:
    virtual ~TextFieldDelegate() = default;
    // The user's edit would replace the range by the replacement (UTF-8). False refuses it.
    virtual bool shouldChangeText(TextField& field, TextRange range, std::string_view replacement) = 0;
    // The user changed the text.
    virtual void controlTextDidChange(TextField& field) = 0;
    // A key command in the field. True when it was handled and the field shall do nothing.
    virtual bool doCommand(TextField& field, TextCommand command) = 0;
};

// One line of text, editable or a label.
class TextField : public Control {
public:
    explicit TextField(std::unique_ptr<Native> native);

    std::string stringValue() const;
    void setStringValue(const std::string& text);
    std::size_t length() const; // UTF-16 code units

    // Leading white space, sign and Unicode decimal digits; 0 when there are none. Held in the 64-bit range.
    std::int64_t integerValue() const;
    void setIntegerValue(std::int64_t value);

    // In the user's current appearance.
    void setTextColor(const Color& color);

    // Held weakly.
    void setDelegate(std::weak_ptr<TextFieldDelegate> delegate);
};

} // namespace platform::ui
