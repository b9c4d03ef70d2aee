#include "platform/linux/system/formats/JSONArrayScanner.h"

#include "platform/JSONBeginning.h"

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

std::optional<std::size_t> JSONArrayScanner::nextCut(std::string_view part)
{
    while (_position < part.size() && !isBroken()) {
        if (_inString)
            skipString(part);
        else if (scanOutside(part[_position++]) && _position > PartLength) {
            const auto cut = _position - 1;
            _position = 1;
            return cut;
        }
    }
    return std::nullopt;
}

void JSONArrayScanner::skipString(std::string_view part)
{
    const auto quote = part.find('"', _position);
    if (quote == std::string_view::npos) {
        _position = part.size();
        return;
    }
    _position = quote + 1;
    auto backslashes = quote;
    while (backslashes > _stringStart && part[backslashes - 1] == '\\')
        --backslashes;
    _inString = (quote - backslashes) % 2 != 0;
}

bool JSONArrayScanner::scanOutside(char character)
{
    const auto kind = classes[static_cast<unsigned char>(character)];
    const auto beginning = _depth == 0 ? jsonBeginning({&character, 1}) : JSONBeginning::Blank;
    if (beginning != JSONBeginning::Blank) {
        if (_state == State::Complete)
            _state = State::CharactersFollow;
        else if (beginning == JSONBeginning::Other)
            _state = State::NotAnArray;
        _isBlank = false;
        if (isBroken())
            return false;
    }
    switch (kind) {
    case Class::Illegal:
        _state = State::UnknownCharacter;
        break;
    case Class::Quote:
        _inString = true;
        _stringStart = _position;
        break;
    case Class::Open:
        if (++_depth > GreatestDepth)
            _state = State::NestedTooDeeply;
        break;
    case Class::Close:
        if (--_depth == 0)
            _state = State::Complete;
        break;
    case Class::Comma:
        return _depth == 1;
    case Class::Space:
    case Class::Value:
        break;
    }
    return false;
}

} // namespace platform
