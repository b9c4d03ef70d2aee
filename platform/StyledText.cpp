#include "platform/StyledText.h"

#include <algorithm>
#include <iterator>

namespace platform {

namespace {

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

// As many bytes as may be cut off without tearing a character.
std::size_t wholeCharacters(std::string_view text, std::size_t limit)
{
    if (limit >= text.size())
        return text.size();
    while (limit > 0 && isContinuation(text[limit]))
        --limit;
    return limit;
}

} // namespace

std::size_t utf16Length(std::string_view text)
{
    std::size_t units = 0;
    for (const char byte : text)
        units += static_cast<std::size_t>(!isContinuation(byte)) + (static_cast<unsigned char>(byte) >= 0xF0);
    return units;
}

void StyledText::appendString(std::string_view string, const TextAttributes& attributes)
{
    const auto begin = size();
    _string += string;
    didAppend(begin, attributes);
}

bool StyledText::appendAttributes(const TextAttributes& attributes, std::string_view format,
                                  std::initializer_list<FormatArgument> arguments)
{
    const auto begin = size();
    if (!appendFormat(_string, format, arguments))
        return false;
    didAppend(begin, attributes);
    return true;
}

void StyledText::didAppend(std::size_t begin, const TextAttributes& attributes)
{
    if (begin == size())
        return;
    const auto style = styleOf(attributes);
    if (!_runs.empty() && _runs.back().style == style)
        _runs.back() = Run(size(), style);
    else
        _runs.emplace_back(size(), style);
    indexLines(begin);
}

std::size_t StyledText::styleOf(const TextAttributes& attributes)
{
    const auto found = std::ranges::find(_styles, attributes);
    if (found == _styles.end())
        _styles.push_back(attributes);
    return static_cast<std::size_t>(std::distance(_styles.begin(), std::ranges::find(_styles, attributes)));
}

void StyledText::indexLines(std::size_t begin)
{
    auto rest = std::string_view(_string).substr(begin);
    while (!rest.empty()) {
        if (_atLineStart)
            _lines.push_back({begin, _length});
        const auto room = LongestLine - (begin - _lines.back().start);
        const auto newline = rest.substr(0, room).find('\n');
        const bool ends = newline != std::string_view::npos;
        const auto taken = ends ? newline + 1 : wholeCharacters(rest, room);
        _length += utf16Length(rest.substr(0, taken));
        _atLineStart = ends || taken < rest.size() || taken == room;
        begin += taken;
        rest.remove_prefix(taken);
    }
}

std::string_view StyledText::line(std::size_t line) const
{
    const auto start = lineStart(line);
    return std::string_view(_string).substr(start, lineStart(line + 1) - start);
}

std::size_t StyledText::lineAt(std::size_t offset) const
{
    const auto after = std::ranges::upper_bound(_lines, offset, {}, &Line::start);
    return after == _lines.begin() ? 0 : static_cast<std::size_t>(std::distance(_lines.begin(), after)) - 1;
}

std::size_t StyledText::lengthBefore(std::size_t offset) const
{
    offset = std::min(offset, size());
    while (offset > 0 && offset < size() && isContinuation(_string[offset]))
        --offset;
    if (_lines.empty())
        return 0;
    const auto& line = _lines[lineAt(offset)];
    return line.lengthBefore + utf16Length(std::string_view(_string).substr(line.start, offset - line.start));
}

std::size_t StyledText::offsetOfLength(std::size_t length) const
{
    if (length >= _length)
        return size();
    const auto after = std::ranges::upper_bound(_lines, length, {}, &Line::lengthBefore);
    const auto& line = *std::prev(after);
    auto offset = line.start;
    auto units = line.lengthBefore;
    for (;;) {
        auto next = offset + 1;
        while (next < size() && isContinuation(_string[next]))
            ++next;
        units += next - offset == 4 ? 2 : 1;
        if (units > length)
            return offset;
        offset = next;
    }
}

void StyledText::visitRuns(std::size_t begin, std::size_t end, const RunVisitor& visit) const
{
    auto run = std::ranges::upper_bound(_runs, begin, {}, [](const Run& each) { return std::size_t(each.end); });
    for (; run != _runs.end() && begin < end; ++run) {
        const auto stop = std::min<std::size_t>(run->end, end);
        visit(begin, stop, _styles[run->style]);
        begin = stop;
    }
}

} // namespace platform
