#include "platform/linux/system/propertylists/OldStyleReader.h"

#include "platform/linux/system/propertylists/Limits.h"
#include "platform/linux/system/propertylists/TextEncoding.h"
#include "platform/Unicode.h"

#include <cstdint>
#include <utility>

namespace platform {

namespace {

bool isPlain(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
        || std::string_view("_$/:.-").find(c) != std::string_view::npos;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::optional<PropertyList> OldStyleReader::read()
{
    if (_text.find('\0') != std::string_view::npos || !isValidUTF8(_text))
        return std::nullopt;
    if (_rest.starts_with(utf8ByteOrderMark))
        _rest.remove_prefix(utf8ByteOrderMark.size());

    const std::string_view start = _rest;
    PropertyList value;
    if (!atEnd() && readValue(value) && atEnd())
        return value;
    _rest = start;
    _depth = 0;
    Dictionary table;
    if (!atEnd() && readPairs(table, false))
        return PropertyList(std::move(table));
    return std::nullopt;
}

// False for a comment without an end.
bool OldStyleReader::skipSpace()
{
    for (;;) {
        const auto next = _rest.find_first_not_of(" \t\r\n\v\f");
        _rest.remove_prefix(next == std::string_view::npos ? _rest.size() : next);
        if (_rest.starts_with("//")) {
            const auto end = _rest.find_first_of("\r\n");
            _rest.remove_prefix(end == std::string_view::npos ? _rest.size() : end);
        } else if (_rest.starts_with("/*")) {
            const auto end = _rest.find("*/", 2);
            if (end == std::string_view::npos)
                return false;
            _rest.remove_prefix(end + 2);
        } else {
            return true;
        }
    }
}

bool OldStyleReader::take(char character)
{
    if (!skipSpace() || !_rest.starts_with(character))
        return false;
    _rest.remove_prefix(1);
    return true;
}

bool OldStyleReader::atEnd()
{
    return skipSpace() && _rest.empty();
}

bool OldStyleReader::readValue(PropertyList& value)
{
    if (!skipSpace() || _rest.empty())
        return false;
    switch (_rest.front()) {
    case '(':
        return readArray(value);
    case '{':
        return readDictionary(value);
    case '<':
        return readData(value);
    default:
        break;
    }
    std::string text;
    if (!readString(text))
        return false;
    value = PropertyList(std::move(text));
    return true;
}

bool OldStyleReader::readArray(PropertyList& value)
{
    if (++_depth > PropertyListLimits::depth || !take('('))
        return false;
    Array array;
    while (!take(')')) {
        PropertyList element;
        if (!array.empty() && !take(','))
            return false;
        // A comma may stand before the end.
        if (take(')'))
            break;
        if (!readValue(element))
            return false;
        array.push_back(std::move(element));
    }
    --_depth;
    value = PropertyList(std::move(array));
    return true;
}

bool OldStyleReader::readDictionary(PropertyList& value)
{
    Dictionary dictionary;
    if (++_depth > PropertyListLimits::depth || !take('{') || !readPairs(dictionary, true))
        return false;
    --_depth;
    value = PropertyList(std::move(dictionary));
    return true;
}

bool OldStyleReader::readPairs(Dictionary& dictionary, bool untilBrace)
{
    while (untilBrace ? !take('}') : !atEnd()) {
        std::string key;
        if (!skipSpace() || !readString(key))
            return false;
        // In a table of strings, a key alone stands for itself.
        PropertyList value(key);
        if (take('=') && !readValue(value))
            return false;
        if (!take(';'))
            return false;
        dictionary.set(key, std::move(value));
    }
    return true;
}

bool OldStyleReader::readData(PropertyList& value)
{
    if (!take('<'))
        return false;
    Data data;
    while (!take('>')) {
        if (_rest.size() < 2 || hexValue(_rest[0]) < 0 || hexValue(_rest[1]) < 0)
            return false;
        data.push_back(static_cast<std::uint8_t>(hexValue(_rest[0]) << 4 | hexValue(_rest[1])));
        _rest.remove_prefix(2);
    }
    value = PropertyList(std::move(data));
    return true;
}

bool OldStyleReader::readString(std::string& text)
{
    if (_rest.starts_with('"') || _rest.starts_with('\''))
        return readQuoted(text, _rest.front());
    std::size_t length = 0;
    while (length < _rest.size() && isPlain(_rest[length]))
        ++length;
    text = _rest.substr(0, length);
    _rest.remove_prefix(length);
    return length > 0;
}

bool OldStyleReader::readQuoted(std::string& text, char quote)
{
    const char marks[] = {quote, '\\', '\0'};
    _rest.remove_prefix(1);
    for (;;) {
        const auto plain = _rest.find_first_of(marks);
        if (plain == std::string_view::npos)
            return false;
        text.append(_rest.substr(0, plain));
        const char mark = _rest[plain];
        _rest.remove_prefix(plain + 1);
        if (mark == quote)
            return true;
        if (!readEscape(text))
            return false;
    }
}

// Up to four hexadecimal digits.
bool OldStyleReader::readUnit(unsigned& unit)
{
    unit = 0;
    int digits = 0;
    for (; digits < 4 && !_rest.empty() && hexValue(_rest.front()) >= 0; ++digits) {
        unit = unit << 4 | static_cast<unsigned>(hexValue(_rest.front()));
        _rest.remove_prefix(1);
    }
    return digits > 0;
}

bool OldStyleReader::readEscape(std::string& text)
{
    if (_rest.empty())
        return false;
    const char letter = _rest.front();
    if (letter >= '0' && letter <= '7') {
        unsigned code = 0;
        for (int digits = 0; digits < 3 && !_rest.empty() && _rest.front() >= '0' && _rest.front() <= '7'; ++digits) {
            code = code << 3 | static_cast<unsigned>(_rest.front() - '0');
            _rest.remove_prefix(1);
        }
        return code > 0 && appendCharacter(text, code);
    }
    _rest.remove_prefix(1);
    if (letter == 'U' || letter == 'u') {
        unsigned unit = 0;
        if (!readUnit(unit))
            return false;
        char32_t character = unit;
        if (isHighSurrogate(unit)) {
            unsigned low = 0;
            if (!(_rest.starts_with("\\U") || _rest.starts_with("\\u")))
                return false;
            _rest.remove_prefix(2);
            if (!readUnit(low) || !isLowSurrogate(low))
                return false;
            character = characterOfSurrogates(unit, low);
        }
        return character > 0 && appendCharacter(text, character);
    }
    constexpr std::string_view letters = "abfnrtv";
    constexpr std::string_view controls = "\a\b\f\n\r\t\v";
    const auto control = letters.find(letter);
    text.push_back(control == std::string_view::npos ? letter : controls[control]);
    return true;
}

} // namespace platform
