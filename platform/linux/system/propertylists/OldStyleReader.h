#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Reads a property list in the old text style: { key = value; } dictionaries, ( a, b ) arrays, <0fbd> data, quoted and
// plain strings, both kinds of comments. There are no numbers, booleans or dates in it. A whole text of `key = value;`
// pairs is a dictionary without its braces.
class OldStyleReader {
public:
    explicit OldStyleReader(std::string_view text) : _text(text), _rest(text) { }

    // nullopt for any damage.
    std::optional<PropertyList> read();

private:
    bool skipSpace();
    bool take(char character);
    bool atEnd();

    bool readValue(PropertyList& value);
    bool readArray(PropertyList& value);
    bool readDictionary(PropertyList& value);
    bool readPairs(Dictionary& dictionary, bool untilBrace);
    bool readData(PropertyList& value);
    bool readString(std::string& text);
    bool readQuoted(std::string& text, char quote);
    bool readEscape(std::string& text);
    bool readUnit(unsigned& unit);

    std::string_view _text;
    std::string_view _rest;
    int _depth = 0;
};

} // namespace platform
