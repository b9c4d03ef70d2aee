#include "platform/linux/ui/styledtext/TextFinder.h"

#include <algorithm>
#include <QElapsedTimer>

namespace platform::ui {

namespace {

constexpr std::size_t blockSize = 65536;
constexpr qint64 turnMilliseconds = 8;

char lowerLetter(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
}

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

} // namespace

TextFinder::TextFinder(QObject* parent) : QObject(parent)
{
    _turn.setSingleShot(true);
    connect(&_turn, &QTimer::timeout, this, &TextFinder::search);
}

void TextFinder::start(std::shared_ptr<const StyledText> text, const QString& word, std::size_t from,
                       Direction direction)
{
    _text = std::move(text);
    _word = word;
    _bytes = word.toStdString();
    _isAscii = std::ranges::none_of(_bytes, [](char each) { return static_cast<unsigned char>(each) >= 0x80; });
    std::ranges::transform(_bytes, _bytes.begin(), lowerLetter);
    _direction = direction;
    _place = std::min(from, _text->size());
    _left = _bytes.empty() ? 0 : _text->size();
    search();
}

void TextFinder::cancel()
{
    _turn.stop();
    _text.reset();
}

void TextFinder::search()
{
    QElapsedTimer time;
    time.start();
    while (_left > 0) {
        if (searchBlock())
            return;
        if (time.elapsed() >= turnMilliseconds)
            return _turn.start();
    }
    _turn.stop();
    Q_EMIT notFound();
}

bool TextFinder::searchBlock()
{
    const auto size = _text->size();
    const bool forward = _direction == Direction::Forward;
    if (forward ? _place == size : _place == 0)
        _place = forward ? 0 : size;
    TextStretch starts;
    if (forward)
        starts = {_place, _place + std::min({blockSize, _left, size - _place})};
    else
        starts = {_place - std::min({blockSize, _left, _place}), _place};
    _left -= starts.end - starts.begin;
    _place = forward ? starts.end : starts.begin;
    const auto match = matchIn(starts);
    if (!match)
        return false;
    _turn.stop();
    Q_EMIT found(match->begin, match->end);
    return true;
}

std::optional<TextStretch> TextFinder::matchIn(TextStretch starts) const
{
    return _isAscii ? asciiMatchIn(starts) : unicodeMatchIn(starts);
}

// The bytes that decide a match may lie beyond the last place where it may begin.
std::optional<TextStretch> TextFinder::asciiMatchIn(TextStretch starts) const
{
    const auto& text = _text->string();
    std::optional<TextStretch> match;
    const char first = _bytes.front();
    const char both[] = {first, first >= 'a' && first <= 'z' ? static_cast<char>(first & ~0x20) : first};
    const auto block = std::string_view(text).substr(0, starts.end);
    for (auto at = block.find_first_of(std::string_view(both, 2), starts.begin); at != std::string_view::npos;
         at = block.find_first_of(std::string_view(both, 2), at + 1)) {
        const auto candidate = std::string_view(text).substr(at, _bytes.size());
        if (!std::ranges::equal(candidate, _bytes, {}, lowerLetter))
            continue;
        match = TextStretch{at, at + candidate.size()};
        if (_direction == Direction::Forward)
            break;
    }
    return match;
}

std::optional<TextStretch> TextFinder::unicodeMatchIn(TextStretch starts) const
{
    const auto& text = _text->string();
    auto begin = starts.begin;
    while (begin < starts.end && continuesCharacter(text[begin]))
        ++begin;
    // A letter's other case may be longer.
    auto end = std::min(text.size(), starts.end + 4 * _bytes.size());
    while (end < text.size() && continuesCharacter(text[end]))
        ++end;
    const auto characters = QString::fromUtf8(text.data() + begin, static_cast<qsizetype>(end - begin));
    const auto beyond = static_cast<qsizetype>(
        utf16Length(std::string_view(text).substr(begin, starts.end > begin ? starts.end - begin : 0)));
    if (beyond == 0)
        return std::nullopt;
    const auto index = _direction == Direction::Forward
        ? characters.indexOf(_word, 0, Qt::CaseInsensitive)
        : characters.lastIndexOf(_word, beyond - 1, Qt::CaseInsensitive);
    if (index < 0 || index >= beyond)
        return std::nullopt;
    const auto bytesBefore = [&](qsizetype units) {
        return begin + static_cast<std::size_t>(QStringView(characters).left(units).toUtf8().size());
    };
    return TextStretch{bytesBefore(index), bytesBefore(index + _word.size())};
}

} // namespace platform::ui
