#include "platform/linux/system/propertylists/XMLReader.h"

#include "platform/linux/system/propertylists/Limits.h"
#include "platform/linux/system/propertylists/XMLScalar.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

namespace {

// The element as a UID, when that is how XML has one.
std::optional<UID> uidOfXML(const Dictionary& dictionary)
{
    const PropertyList* index = dictionary.size() == 1 ? dictionary.find("CF$UID") : nullptr;
    if (index && index->unsignedInteger())
        return UID{*index->unsignedInteger()};
    if (!index || index->type() != PropertyList::Type::Integer || index->integerValue() < 0)
        return std::nullopt;
    return UID{static_cast<std::uint64_t>(index->integerValue())};
}

} // namespace

// Data in the old style also begins with a bracket, but none of these is hexadecimal.
bool XMLReader::looksLikeXML(std::string_view text)
{
    constexpr std::array<std::string_view, 13> beginnings{"<?xml",  "<!DOCTYPE", "<!--",  "<plist", "<dict",
                                                          "<array", "<string",   "<int",  "<real",  "<date",
                                                          "<data",  "<true",     "<false"};
    text.remove_prefix(std::min(text.find_first_not_of(xmlWhiteSpace), text.size()));
    return std::ranges::any_of(beginnings, [&](std::string_view beginning) { return text.starts_with(beginning); });
}

std::optional<PropertyList> XMLReader::read()
{
    auto value = skipProlog() ? readContent() : std::nullopt;
    return value && skipComments() && _rest.empty() ? std::move(value) : std::nullopt;
}

std::optional<PropertyList> XMLReader::readContent()
{
    const auto root = takeTag();
    if (!root || root->name != "plist")
        return root ? readElement(*root) : std::nullopt;
    if (root->isEnd || root->isEmpty || !skipComments())
        return std::nullopt;
    const auto first = takeTag();
    auto value = first ? readElement(*first) : std::nullopt;
    const auto end = value && skipComments() ? takeTag() : std::nullopt;
    return end && end->name == "plist" && end->isEnd ? std::move(value) : std::nullopt;
}

bool XMLReader::takePast(std::string_view mark)
{
    const auto end = _rest.find(mark);
    if (end == std::string_view::npos)
        return false;
    _rest.remove_prefix(end + mark.size());
    return true;
}

void XMLReader::skipSpace()
{
    _rest.remove_prefix(std::min(_rest.find_first_not_of(xmlWhiteSpace), _rest.size()));
}

// Comments and processing instructions. False for one without an end.
bool XMLReader::skipComments()
{
    for (;;) {
        skipSpace();
        if (_rest.starts_with("<!--")) {
            _rest.remove_prefix(4);
            if (!takePast("-->"))
                return false;
        } else if (!_rest.starts_with("<?")) {
            return true;
        } else if (!takePast("?>")) {
            return false;
        }
    }
}

// A document type with a subset of its own, which is where entities would be declared, is not read.
bool XMLReader::skipProlog()
{
    if (!skipComments())
        return false;
    if (!_rest.starts_with("<!DOCTYPE"))
        return true;
    const std::string_view declaration = _rest.substr(0, _rest.find('>'));
    return declaration.find('[') == std::string_view::npos && takePast(">") && skipComments();
}

std::optional<XMLReader::Tag> XMLReader::takeTag()
{
    const auto end = _rest.find('>');
    if (!_rest.starts_with('<') || end == std::string_view::npos)
        return std::nullopt;
    std::string_view content = _rest.substr(1, end - 1);
    _rest.remove_prefix(end + 1);
    Tag tag;
    tag.isEnd = content.starts_with('/');
    content.remove_prefix(tag.isEnd ? 1 : 0);
    tag.isEmpty = content.ends_with('/');
    content.remove_suffix(tag.isEmpty ? 1 : 0);
    tag.name = content.substr(0, content.find_first_of(xmlWhiteSpace)); // attributes mean nothing here
    if ((tag.isEnd && tag.isEmpty) || content.find('<') != std::string_view::npos)
        return std::nullopt;
    return tag;
}

std::optional<PropertyList> XMLReader::readElement(const Tag& tag)
{
    if (tag.isEnd)
        return std::nullopt;
    if (tag.name == "dict" || tag.name == "array")
        return readCollection(tag);
    auto text = readText(tag);
    return text ? readScalar(tag.name, std::move(*text)) : std::nullopt;
}

std::optional<PropertyList> XMLReader::readScalar(std::string_view name, std::string text)
{
    if (name == "string")
        return PropertyList(std::move(text));
    if (name == "integer")
        return integerOfXML(text);
    if (name == "real")
        return realOfXML(text);
    if (name == "date")
        return dateOfXML(text);
    if (name == "data")
        return dataOfXML(text);
    const bool isBlank = text.find_first_not_of(xmlWhiteSpace) == std::string::npos;
    if (isBlank && (name == "true" || name == "false"))
        return PropertyList(name == "true");
    return std::nullopt;
}

std::optional<PropertyList> XMLReader::readCollection(const Tag& tag)
{
    const bool isArray = tag.name == "array";
    Array array;
    Dictionary dictionary;
    if (++_depth > PropertyListLimits::depth)
        return std::nullopt;
    if (!tag.isEmpty && !(isArray ? readArray(array) : readDictionary(dictionary)))
        return std::nullopt;
    --_depth;
    if (isArray)
        return PropertyList(std::move(array));
    if (const auto uid = uidOfXML(dictionary))
        return PropertyList(*uid);
    return PropertyList(std::move(dictionary));
}

bool XMLReader::readArray(Array& array)
{
    for (;;) {
        const auto tag = skipComments() ? takeTag() : std::nullopt;
        if (!tag)
            return false;
        if (tag->isEnd)
            return tag->name == "array";
        auto value = readElement(*tag);
        if (!value)
            return false;
        array.push_back(std::move(*value));
    }
}

bool XMLReader::readDictionary(Dictionary& dictionary)
{
    for (;;) {
        const auto tag = skipComments() ? takeTag() : std::nullopt;
        if (!tag)
            return false;
        if (tag->isEnd)
            return tag->name == "dict";
        const auto key = tag->name == "key" ? readText(*tag) : std::nullopt;
        const auto valueTag = key && skipComments() ? takeTag() : std::nullopt;
        auto value = valueTag ? readElement(*valueTag) : std::nullopt;
        if (!value)
            return false;
        dictionary.set(*key, std::move(*value));
    }
}

// The text of an element up to and including its end tag.
std::optional<std::string> XMLReader::readText(const Tag& tag)
{
    std::string text;
    if (tag.isEmpty)
        return text;
    for (;;) {
        if (!appendCharacterData(text))
            return std::nullopt;
        if (_rest.starts_with("<!--")) {
            _rest.remove_prefix(4);
            if (!takePast("-->"))
                return std::nullopt;
        } else if (_rest.starts_with("<![CDATA[")) {
            _rest.remove_prefix(9);
            text.append(_rest.substr(0, _rest.find("]]>")));
            if (!takePast("]]>"))
                return std::nullopt;
        } else {
            const auto end = takeTag();
            return end && end->isEnd && end->name == tag.name ? std::optional(std::move(text)) : std::nullopt;
        }
    }
}

// Up to the next markup.
bool XMLReader::appendCharacterData(std::string& text)
{
    for (;;) {
        const auto special = _rest.find_first_of("<&");
        if (special == std::string_view::npos)
            return false;
        text.append(_rest.substr(0, special));
        _rest.remove_prefix(special);
        if (_rest.front() == '<')
            return true;
        constexpr std::size_t longestEntity = 10; // "&#x10FFFF;"
        const auto end = _rest.substr(0, longestEntity).find(';');
        const auto character = end == std::string_view::npos ? 0 : characterOfEntity(_rest.substr(1, end - 1));
        if (character == 0 || !appendCharacter(text, character))
            return false;
        _rest.remove_prefix(end + 1);
    }
}

} // namespace platform
