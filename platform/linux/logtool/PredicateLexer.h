#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace logtool {

struct Token {
    enum class Kind { Word, Text, Equal, And, Or, Open, Close, End };
    Kind kind = Kind::End;
    std::string text;       // of a word or a text
    std::size_t column = 1; // where it begins, counted from 1
};

// Takes a predicate apart into words, texts and signs.
class PredicateLexer {
public:
    explicit PredicateLexer(std::string_view text) : _text(text) { }

    // The error is a sentence.
    std::expected<Token, std::string> next();

private:
    std::expected<Token, std::string> quoted();
    Token word();

    std::string_view _text;
    std::size_t _position = 0;
};

} // namespace logtool
