#pragma once

#include "platform/Color.h"
#include "platform/Format.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The user's fixed-pitch font at its default size. Without a font, text is shown in the control's own.
enum class TextFont { UserFixedPitch };

struct TextAttributes {
    std::optional<TextFont> font;
    std::optional<Color> foreground;
    bool operator==(const TextAttributes&) const = default;
};

// Text with attributes, in UTF-8, which only grows at its end. It knows where its lines start, so that a view need not
// look through all of it. Offsets are bytes; the platform's own counting in UTF-16 units is available beside it.
class StyledText {
public:
    // A line ends after a newline, or at the latest after so many bytes, so that laying one out takes little time.
    static constexpr std::size_t LongestLine = 4096;

    // Room for so many bytes.
    void reserve(std::size_t bytes) { _string.reserve(bytes); }

    // Valid UTF-8.
    void appendString(std::string_view string, const TextAttributes& attributes);
    // Text filled as by formatString; false, with nothing appended, where that has no result.
    bool appendAttributes(const TextAttributes& attributes, std::string_view format,
                          std::initializer_list<FormatArgument> arguments);

    const std::string& string() const { return _string; }
    std::size_t size() const { return _string.size(); }
    bool empty() const { return _string.empty(); }

    // What follows a newline at the very end is no line.
    std::size_t lineCount() const { return _lines.size(); }
    std::size_t lineStart(std::size_t line) const { return line < _lines.size() ? _lines[line].start : size(); }
    // With its newline.
    std::string_view line(std::size_t line) const;
    // The line of the byte; the last one for the end.
    std::size_t lineAt(std::size_t offset) const;

    // In UTF-16 units. A byte inside a character counts as its first.
    std::size_t length() const { return _length; }
    std::size_t lengthBefore(std::size_t offset) const;
    std::size_t offsetOfLength(std::size_t length) const;

    using RunVisitor = std::function<void(std::size_t begin, std::size_t end, const TextAttributes& attributes)>;
    // The stretches of equal attributes in [begin, end), in order.
    void visitRuns(std::size_t begin, std::size_t end, const RunVisitor& visit) const;

private:
    struct Run {
        Run(std::size_t theEnd, std::size_t theStyle) : end(theEnd & EndMask), style(theStyle & StyleMask) { }
        static constexpr std::uint64_t EndMask = (std::uint64_t(1) << 48) - 1;
        static constexpr std::uint64_t StyleMask = 0xFFFF;
        std::uint64_t end : 48;
        std::uint64_t style : 16; // of _styles
    };
    struct Line {
        std::size_t start;
        std::size_t lengthBefore;
    };

    void didAppend(std::size_t begin, const TextAttributes& attributes);
    void indexLines(std::size_t begin);
    std::size_t styleOf(const TextAttributes& attributes);

    std::string _string;
    std::vector<TextAttributes> _styles;
    std::vector<Run> _runs;
    std::vector<Line> _lines;
    std::size_t _length = 0;
    bool _atLineStart = true;
};

// In UTF-16 units.
std::size_t utf16Length(std::string_view text);

} // namespace platform
