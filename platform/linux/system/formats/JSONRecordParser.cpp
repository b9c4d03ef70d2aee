#include "platform/linux/system/formats/JSONRecordParser.h"

#include "platform/Format.h"

#include <algorithm>
#include <charconv>
#include <simdjson.h>
#include <string>
#include <vector>

namespace platform {

namespace dom = simdjson::dom;

const std::size_t JSONRecordParser::Padding = simdjson::SIMDJSON_PADDING;

struct JSONRecordParser::Native {
    dom::parser parser;
    std::vector<JSONField> fields;
    std::vector<std::string> descriptions; // the texts of fields that are no strings
};

namespace {

PropertyList propertyList(dom::element value);

PropertyList propertyListOfArray(dom::array array)
{
    Array elements;
    for (const dom::element element : array)
        elements.push_back(propertyList(element));
    return elements;
}

PropertyList propertyListOfObject(dom::object object)
{
    Dictionary members;
    for (const dom::key_value_pair member : object)
        members.set(std::string(member.key), propertyList(member.value));
    return members;
}

// The texts of what a property list does not hold.
PropertyList propertyList(dom::element value)
{
    switch (value.type()) {
    case dom::element_type::STRING:
        return std::string(value.get_string().value_unsafe());
    case dom::element_type::INT64:
        return value.get_int64().value_unsafe();
    case dom::element_type::UINT64:
        return std::to_string(value.get_uint64().value_unsafe());
    case dom::element_type::DOUBLE:
        return value.get_double().value_unsafe();
    case dom::element_type::BOOL:
        return value.get_bool().value_unsafe();
    case dom::element_type::ARRAY:
        return propertyListOfArray(value.get_array().value_unsafe());
    case dom::element_type::OBJECT:
        return propertyListOfObject(value.get_object().value_unsafe());
    case dom::element_type::NULL_VALUE:
        break;
    }
    return std::string("<null>");
}

void readMembers(dom::object object, std::span<const std::string_view> keys, std::span<JSONField> fields,
                 std::span<std::string> descriptions)
{
    for (const dom::key_value_pair member : object) {
        const auto place = static_cast<std::size_t>(std::ranges::find(keys, member.key) - keys.begin());
        if (place == keys.size())
            continue;
        if (member.value.is_string()) {
            fields[place] = {JSONField::Kind::String, member.value.get_string().value_unsafe()};
            continue;
        }
        descriptions[place] = description(propertyList(member.value));
        fields[place] = {JSONField::Kind::Other, descriptions[place]};
    }
}

std::size_t lengthOfString(std::string_view json)
{
    std::size_t end = 1;
    while (end < json.size() && json[end] != '"')
        end += json[end] == '\\' ? 2 : 1;
    return std::min(end + 1, json.size());
}

// Whether the text is a whole number that 64 bits, with a sign or without, do not hold.
bool isLongInteger(std::string_view text)
{
    if (text.empty() || text.find_first_not_of("-0123456789") != std::string_view::npos)
        return false;
    const auto isTooLong = [&](auto value) {
        return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range;
    };
    return text.front() == '-' ? isTooLong(std::int64_t()) : isTooLong(std::uint64_t());
}

// The parser refuses integers beyond 64 bits, but takes them as reals: "...0" becomes "...0.0".
std::string withLongIntegersAsReals(std::string_view json)
{
    std::string text;
    while (!json.empty()) {
        const auto token = std::min(json.find_first_not_of("+-.0123456789eE"), json.size());
        const auto length = json.front() == '"' ? lengthOfString(json) : std::max(token, std::size_t(1));
        const auto piece = json.substr(0, length);
        text.append(piece);
        if (isLongInteger(piece))
            text.append(".0");
        json.remove_prefix(length);
    }
    return text;
}

} // namespace

JSONRecordParser::JSONRecordParser() : _native(std::make_unique<Native>()) { }

JSONRecordParser::~JSONRecordParser() = default;

std::optional<std::size_t> JSONRecordParser::parse(std::string_view array, std::span<const std::string_view> keys,
                                                   const JSONRecords::Visitor& visit)
{
    auto& parser = _native->parser;
    dom::array elements;
    auto failure = parser.parse(array.data(), array.size(), false).get_array().get(elements);
    if (failure) {
        const auto withReals = withLongIntegersAsReals(array);
        failure = parser.parse(withReals).get_array().get(elements);
    }
    if (failure) {
        _failure = simdjson::error_message(failure);
        return std::nullopt;
    }
    auto& fields = _native->fields;
    auto& descriptions = _native->descriptions;
    descriptions.resize(keys.size());
    std::size_t count = 0;
    for (const dom::element element : elements) {
        ++count;
        fields.assign(keys.size(), {});
        dom::object object;
        if (element.get_object().get(object) == simdjson::SUCCESS)
            readMembers(object, keys, fields, descriptions);
        visit(fields);
    }
    return count;
}

} // namespace platform
