#include "platform/linux/ui/textlayout/TextLines.h"

namespace platform::ui {

namespace {

// Of one long line, to be laid out for the place of a row; about 130 KB.
constexpr std::size_t mostLinesAbove = 32;

} // namespace

bool TextLines::comesOn(std::size_t line) const
{
    return line > 0 && line < _text->lineCount() && _text->string()[_text->lineStart(line) - 1] != '\n';
}

std::size_t TextLines::start(std::size_t line) const
{
    const auto found = _starts.find(line);
    return found == _starts.end() ? _text->lineStart(line) : found->second;
}

std::size_t TextLines::at(std::size_t offset) const
{
    const auto line = _text->lineAt(offset);
    const auto next = _starts.find(line + 1);
    return next != _starts.end() && next->second <= offset ? line + 1 : line;
}

void TextLines::settle(std::size_t line, const LastRowStart& lastRowStart)
{
    if (isSettled(line) && isSettled(line + 1))
        return;
    auto above = line;
    while (!isSettled(above) && line - above < mostLinesAbove)
        --above;
    if (!isSettled(above))
        _starts[above] = _text->lineStart(above);
    for (auto each = above; each <= line; ++each) {
        if (isSettled(each + 1))
            continue;
        const auto begin = start(each);
        const auto end = _text->lineStart(each + 1);
        const auto row = lastRowStart({begin, end});
        _starts[each + 1] = row > begin ? row : end;
    }
}

} // namespace platform::ui
