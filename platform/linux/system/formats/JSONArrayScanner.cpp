#include "platform/linux/system/formats/JSONArrayScanner.h"

#include <array>
#include <cstdint>

namespace platform {

namespace {

enum class Class : std::uint8_t { Illegal, Space, Value, Quote, Open, Close, Comma };

// Of what may stand outside a string.
constexpr std::array<Class, 256> classes = [] {
    std::array<Class, 256> table{};
    const auto set = [&table](std::string_view characters, Class value) {
        for (const char character : characters)
            table[static_cast<unsigned char>(character)] = value;
    };
    set(" \t\r\n", Class::Space);
    set(":+-.0123456789eEtrufalsn", Class::Value);
    set("\"", Class::Quote);
    set("[{", Class::Open);
    set("]}", Class::Close);
    set(",", Class::Comma);
    return table;
}();

} // namespace

void JSONArrayScanner::scan(std::string_view text)
{
    while (_position < text.size() && !_broken) {
        if (_inString)
            skipString(text);
        else
            scanOutside(text[_position]);
    }
}

void JSONArrayScanner::skipString(std::string_view text)
{
    const auto quote = text.find('"', _position);
    if (quote == std::string_view::npos) {
        _position = text.size();
        return;
    }
    _position = quote + 1;
    auto backslashes = quote;
    while (backslashes > _stringStart && text[backslashes - 1] == '\\')
        --backslashes;
    _inString = (quote - backslashes) % 2 != 0;
}

void JSONArrayScanner::scanOutside(char character)
{
    const auto kind = classes[static_cast<unsigned char>(character)];
    if (_depth == 0 && kind != Class::Space && (_complete || character != '[')) {
        _broken = true;
        return;
    }
    switch (kind) {
    case Class::Illegal:
        _broken = true;
        return;
    case Class::Quote:
        _inString = true;
        _stringStart = _position + 1;
        break;
    case Class::Open:
        if (_depth++ == 0)
            _cuts.push_back(_position);
        _broken = _depth > GreatestDepth;
        break;
    case Class::Close:
        close();
        break;
    case Class::Comma:
        if (_depth == 1 && _position - _cuts.back() >= PartLength)
            _cuts.push_back(_position);
        break;
    case Class::Space:
    case Class::Value:
        break;
    }
    ++_position;
}

void JSONArrayScanner::close()
{
    if (--_depth > 0)
        return;
    _cuts.push_back(_position);
    _complete = true;
}

} // namespace platform
