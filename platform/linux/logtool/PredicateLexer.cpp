#include "platform/linux/logtool/PredicateLexer.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <array>
#include <utility>

namespace logtool {

namespace {

struct Sign {
    std::string_view text;
    Token::Kind kind;
};

constexpr std::array<Sign, 5> signs = {{{"==", Token::Kind::Equal},
                                        {"&&", Token::Kind::And},
                                        {"||", Token::Kind::Or},
                                        {"(", Token::Kind::Open},
                                        {")", Token::Kind::Close}}};

bool isLetter(char character)
{
    const char lower = static_cast<char>(character | 0x20);
    return (lower >= 'a' && lower <= 'z') || character == '_';
}

bool isSpace(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

std::string lowerCase(std::string text)
{
    std::ranges::transform(text, text.begin(), [](char each) {
        return each >= 'A' && each <= 'Z' ? static_cast<char>(each | 0x20) : each;
    });
    return text;
}

std::string firstCharacter(std::string_view text)
{
    std::string character;
    platform::appendCharacter(character, platform::takeCharacter(text));
    return character;
}

} // namespace

std::expected<Token, std::string> PredicateLexer::next()
{
    while (_position < _text.size() && isSpace(_text[_position]))
        ++_position;
    const auto rest = _text.substr(_position);
    if (rest.empty())
        return Token{Token::Kind::End, {}, _position + 1};
    if (rest.front() == '"' || rest.front() == '\'')
        return quoted();
    if (isLetter(rest.front()))
        return word();
    const auto sign = std::ranges::find_if(signs, [rest](const Sign& each) { return rest.starts_with(each.text); });
    if (sign == signs.end())
        return std::unexpected("'" + firstCharacter(rest) + "' at column " + std::to_string(_position + 1)
                               + " has no meaning");
    _position += sign->text.size();
    return Token{sign->kind, {}, _position + 1 - sign->text.size()};
}

std::expected<Token, std::string> PredicateLexer::quoted()
{
    Token token{Token::Kind::Text, {}, _position + 1};
    const char mark = _text[_position++];
    for (; _position < _text.size(); ++_position) {
        char character = _text[_position];
        if (character == mark) {
            ++_position;
            return token;
        }
        if (character == '\\' && ++_position < _text.size())
            character = _text[_position];
        if (_position < _text.size())
            token.text += character;
    }
    return std::unexpected("the text at column " + std::to_string(token.column) + " has no closing quotation mark");
}

Token PredicateLexer::word()
{
    Token token{Token::Kind::Word, {}, _position + 1};
    while (_position < _text.size() && isLetter(_text[_position]))
        token.text += _text[_position++];
    const auto lower = lowerCase(token.text);
    if (lower == "and")
        token.kind = Token::Kind::And;
    else if (lower == "or")
        token.kind = Token::Kind::Or;
    else if (lower == "endswith")
        token.text = lower;
    return token;
}

} // namespace logtool
