#pragma once

#include "platform/linux/ui/textlayout/TextStretch.h"
#include "platform/StyledText.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>

namespace platform::ui {

// The lines of a text as a view of one width lays them out. Where the text has broken a long line somewhere, the view
// breaks it at the end of a row.
class TextLines {
public:
    // The start of the last row of this stretch when it is laid out.
    using LastRowStart = std::function<std::size_t(TextStretch stretch)>;

    explicit TextLines(std::shared_ptr<const StyledText> text) : _text(std::move(text)) { }

    // Finds out where the line starts and ends, before it is used. Lines far above in the same long line are left
    // alone, so that this takes little time.
    void settle(std::size_t line, const LastRowStart& lastRowStart);

    std::size_t start(std::size_t line) const;
    TextStretch stretch(std::size_t line) const { return {start(line), start(line + 1)}; }
    // The line of the byte; the last one for the end.
    std::size_t at(std::size_t offset) const;

private:
    bool comesOn(std::size_t line) const; // from the one before, without a newline
    bool isSettled(std::size_t line) const { return !comesOn(line) || _starts.contains(line); }

    std::shared_ptr<const StyledText> _text;
    std::map<std::size_t, std::size_t> _starts; // of settled lines that come on
};

} // namespace platform::ui
