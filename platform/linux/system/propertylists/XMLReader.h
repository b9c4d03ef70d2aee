#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Reads an XML property list, in time linear in its size whatever it holds. The root stands in <plist> or alone. It is
// strict: every element ends, holds what its kind allows and nothing else, dictionaries pair keys with values, and the
// document type declares nothing. A dictionary of CF$UID and a number is what it is on the platform, a UID.
class XMLReader {
public:
    // Valid UTF-8 without a byte-order mark or a NUL.
    explicit XMLReader(std::string_view text) : _rest(text) { }

    // Whether a text is to be read as XML rather than in the old style.
    static bool looksLikeXML(std::string_view text);

    // Nullopt for any damage.
    std::optional<PropertyList> read();

private:
    struct Tag {
        std::string_view name;
        bool isEnd = false;
        bool isEmpty = false;
    };

    bool takePast(std::string_view mark);
    void skipSpace();
    bool skipProlog();
    bool skipComments();
    std::optional<Tag> takeTag();

    std::optional<PropertyList> readContent();
    std::optional<PropertyList> readElement(const Tag& tag);
    std::optional<PropertyList> readScalar(std::string_view name, std::string text);
    std::optional<PropertyList> readCollection(const Tag& tag);
    bool readArray(Array& array);
    bool readDictionary(Dictionary& dictionary);
    std::optional<std::string> readText(const Tag& tag);
    bool appendCharacterData(std::string& text);

    std::string_view _rest;
    int _depth = 0; // collections around the current place
};

} // namespace platform
