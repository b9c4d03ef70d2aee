#include "platform/linux/ui/styledtext/StyledTextAccessible.h"

#include "platform/linux/ui/textlayout/TextStretchData.h"

#include <algorithm>
#include <limits>
#include <QTextBoundaryFinder>
#include <utility>

namespace platform::ui {

namespace {

QAccessibleInterface* makeStyledTextAccessible(const QString&, QObject* object)
{
    auto* const area = qobject_cast<StyledTextArea*>(object);
    return area ? new StyledTextAccessible(*area) : nullptr;
}

QTextBoundaryFinder::BoundaryType boundaryOf(QAccessible::TextBoundaryType type)
{
    switch (type) {
    case QAccessible::WordBoundary:
        return QTextBoundaryFinder::Word;
    case QAccessible::SentenceBoundary:
        return QTextBoundaryFinder::Sentence;
    default:
        return QTextBoundaryFinder::Grapheme;
    }
}

// Where the character, word or sentence begins and ends in the line.
std::pair<int, int> partAt(const QString& line, int position, QAccessible::TextBoundaryType type)
{
    QTextBoundaryFinder finder(boundaryOf(type), line);
    finder.setPosition(position);
    const auto end = finder.toNextBoundary();
    finder.setPosition(position);
    const auto start = finder.isAtBoundary() ? position : finder.toPreviousBoundary();
    return {static_cast<int>(std::max<qsizetype>(start, 0)), static_cast<int>(end < 0 ? line.size() : end)};
}

} // namespace

void StyledTextAccessible::install()
{
    static const bool installed = [] {
        QAccessible::installFactory(makeStyledTextAccessible);
        return true;
    }();
    static_cast<void>(installed);
}

StyledTextAccessible::StyledTextAccessible(StyledTextArea& area) : QAccessibleWidget(&area, QAccessible::EditableText)
{
}

StyledTextArea& StyledTextAccessible::area() const
{
    return *static_cast<StyledTextArea*>(widget());
}

void* StyledTextAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State StyledTextAccessible::state() const
{
    auto state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

std::size_t StyledTextAccessible::offsetOf(int position) const
{
    return styledText().offsetOfLength(static_cast<std::size_t>(std::max(position, 0)));
}

int StyledTextAccessible::positionOf(std::size_t offset) const
{
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(styledText().lengthBefore(offset), most));
}

void StyledTextAccessible::selection(int index, int* start, int* end) const
{
    const auto chosen = area().selection();
    const bool exists = index == 0 && !chosen.isEmpty();
    *start = exists ? positionOf(chosen.begin) : 0;
    *end = exists ? positionOf(chosen.end) : 0;
}

int StyledTextAccessible::selectionCount() const
{
    return area().selection().isEmpty() ? 0 : 1;
}

void StyledTextAccessible::addSelection(int start, int end)
{
    area().select(offsetOf(start), offsetOf(end));
}

void StyledTextAccessible::removeSelection(int index)
{
    if (index == 0)
        area().select(area().selectionHead(), area().selectionHead());
}

void StyledTextAccessible::setSelection(int index, int start, int end)
{
    if (index == 0)
        addSelection(start, end);
}

int StyledTextAccessible::cursorPosition() const
{
    return positionOf(area().selectionHead());
}

void StyledTextAccessible::setCursorPosition(int position)
{
    addSelection(position, position);
}

QString StyledTextAccessible::text(QAccessible::Text type) const
{
    // It is called what the control is called that it is a part of; the whole text is for the text interface alone.
    if (type == QAccessible::Name && area().parentWidget())
        return area().parentWidget()->accessibleName();
    if (type == QAccessible::Description && styledText().empty())
        return area().placeholder();
    return type == QAccessible::Value ? QString() : QAccessibleWidget::text(type);
}

QString StyledTextAccessible::text(int start, int end) const
{
    return plainText(styledText(), {offsetOf(start), std::max(offsetOf(start), offsetOf(end))});
}

QString StyledTextAccessible::lineText(std::size_t line, int* start, int* end) const
{
    const auto& text = styledText();
    const TextStretch stretch{text.lineStart(line), text.lineStart(line + 1)};
    *start = positionOf(stretch.begin);
    *end = positionOf(stretch.end);
    return plainText(text, stretch);
}

QString StyledTextAccessible::textAtOffset(int offset, QAccessible::TextBoundaryType type, int* start, int* end) const
{
    if (type == QAccessible::LineBoundary || type == QAccessible::ParagraphBoundary)
        return lineText(styledText().lineAt(offsetOf(offset)), start, end);
    if (type == QAccessible::NoBoundary) {
        *start = 0;
        *end = characterCount();
        return text(0, *end);
    }
    // Words and characters are looked for in the line alone.
    int lineStart = 0;
    int lineEnd = 0;
    const auto line = lineText(styledText().lineAt(offsetOf(offset)), &lineStart, &lineEnd);
    const auto found = partAt(line, offset - lineStart, type);
    *start = lineStart + found.first;
    *end = lineStart + found.second;
    return line.mid(found.first, found.second - found.first);
}

QString StyledTextAccessible::textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* start,
                                               int* end) const
{
    textAtOffset(offset, type, start, end);
    return *start > 0 ? textAtOffset(*start - 1, type, start, end) : QString();
}

QString StyledTextAccessible::textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* start,
                                              int* end) const
{
    textAtOffset(offset, type, start, end);
    return *end < characterCount() ? textAtOffset(*end, type, start, end) : QString();
}

int StyledTextAccessible::characterCount() const
{
    return positionOf(styledText().size());
}

QRect StyledTextAccessible::characterRect(int offset) const
{
    const auto rect = area().characterRect(offsetOf(offset));
    return rect.isNull() ? rect : QRect(area().viewport()->mapToGlobal(rect.topLeft()), rect.size());
}

int StyledTextAccessible::offsetAtPoint(const QPoint& point) const
{
    return positionOf(area().offsetAt(area().viewport()->mapFromGlobal(point)));
}

void StyledTextAccessible::scrollToSubstring(int start, int)
{
    area().scrollTo(offsetOf(start));
}

QString StyledTextAccessible::attributes(int offset, int* start, int* end) const
{
    const auto place = offsetOf(offset);
    *start = *end = offset;
    styledText().visitRuns(place, std::min(place + 1, styledText().size()),
                           [&](std::size_t begin, std::size_t stop, const TextAttributes&) {
                               *start = positionOf(begin);
                               *end = positionOf(stop);
                           });
    return {};
}

} // namespace platform::ui
