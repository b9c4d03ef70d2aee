#include "platform/Format.h"
#include "platform/UTF8.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace platform {

namespace {

constexpr std::size_t indentation = 4;
constexpr double referenceDateIn1970 = 978307200; // 2001-01-01 00:00:00 UTC

bool isPlainWord(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
}

void appendUnit(std::string& out, unsigned unit)
{
    char text[16];
    std::snprintf(text, sizeof text, "\\U%04x", unit);
    out.append(text);
}

void appendEscaped(std::string& out, char32_t character)
{
    if (character == '\n') {
        out.append("\\n");
    } else if (character == '\t') {
        out.append("\\t");
    } else if (character == '"' || character == '\\') {
        out.push_back('\\');
        out.push_back(static_cast<char>(character));
    } else if (character >= 0x20 && character < 0x7F) {
        out.push_back(static_cast<char>(character));
    } else if (character > 0xFFFF) {
        appendUnit(out, 0xD800 + ((character - 0x10000) >> 10));
        appendUnit(out, 0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
        appendUnit(out, character);
    }
}

void appendListed(std::string& out, std::string_view text)
{
    if (isPlainWord(text)) {
        out.append(text);
        return;
    }
    out.push_back('"');
    while (!text.empty()) {
        const auto character = takeCharacter(text);
        appendEscaped(out, character.value_or(0xFFFD));
        if (!character)
            text.remove_prefix(1);
    }
    out.push_back('"');
}

std::string realText(double real)
{
    // The shortest text that reads back as the same number.
    char text[32];
    for (const int precision : {15, 16, 17}) {
        std::snprintf(text, sizeof text, "%.*g", precision, real);
        if (std::strtod(text, nullptr) == real)
            break;
    }
    return text;
}

std::string dateText(Date date)
{
    const double seconds = std::floor(date.secondsSinceReferenceDate + referenceDateIn1970);
    std::tm utc{};
    const auto time = static_cast<std::time_t>(std::abs(seconds) < 1e15 ? seconds : 0);
    if (std::abs(seconds) >= 1e15 || !::gmtime_r(&time, &utc))
        return realText(date.secondsSinceReferenceDate);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d +0000", utc.tm_year + 1900, utc.tm_mon + 1,
                  utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
    return text;
}

std::string dataText(const Data& data)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "<";
    for (const std::uint8_t byte : data) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text + ">";
}

// A value without elements, by itself.
std::string leafText(const PropertyList& value)
{
    switch (value.type()) {
    case PropertyList::Type::Boolean:
    case PropertyList::Type::Integer:
        return std::to_string(value.integerValue());
    case PropertyList::Type::Real:
        return realText(value.realValue());
    case PropertyList::Type::Date:
        return dateText(*value.date());
    case PropertyList::Type::Data:
        return dataText(*value.data());
    default:
        return *value.string();
    }
}

void appendValue(std::string& out, const PropertyList& value, std::size_t depth);

void appendArray(std::string& out, const Array& array, std::size_t depth)
{
    out.append("(\n");
    for (std::size_t i = 0; i < array.size(); ++i) {
        out.append((depth + 1) * indentation, ' ');
        appendValue(out, array[i], depth + 1);
        out.append(i + 1 < array.size() ? ",\n" : "\n");
    }
    out.append(depth * indentation, ' ').append(")");
}

void appendDictionary(std::string& out, const Dictionary& dictionary, std::size_t depth)
{
    out.append("{\n");
    for (const Dictionary::Entry& entry : dictionary) {
        out.append((depth + 1) * indentation, ' ');
        appendListed(out, entry.key);
        out.append(" = ");
        appendValue(out, entry.value, depth + 1);
        out.append(";\n");
    }
    out.append(depth * indentation, ' ').append("}");
}

// As an element of a listing.
void appendValue(std::string& out, const PropertyList& value, std::size_t depth)
{
    if (const Array* array = value.array())
        appendArray(out, *array, depth);
    else if (const Dictionary* dictionary = value.dictionary())
        appendDictionary(out, *dictionary, depth);
    else if (value.data())
        out.append(leafText(value));
    else
        appendListed(out, leafText(value));
}

} // namespace

std::string description(const PropertyList& value)
{
    if (!value.array() && !value.dictionary())
        return leafText(value);
    std::string text;
    appendValue(text, value, 0);
    return text;
}

} // namespace platform
