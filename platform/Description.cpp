#include "platform/Format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <utility>

namespace platform {

namespace {

constexpr char hexadecimal[] = "0123456789abcdef";

bool isPlain(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z')
            || (character >= 'A' && character <= 'Z');
    });
}

void appendUnit(std::string& out, char32_t unit)
{
    out.append("\\U");
    for (int shift = 12; shift >= 0; shift -= 4)
        out.push_back(hexadecimal[(unit >> shift) & 0xF]);
}

void appendEscaped(std::string& out, char32_t character)
{
    if (character >= 0x10000) {
        appendUnit(out, highSurrogateOf(character));
        appendUnit(out, lowSurrogateOf(character));
    } else if (character >= 0x7F) {
        appendUnit(out, character);
    } else {
        out.push_back('\\');
        for (int shift = 6; shift >= 0; shift -= 3)
            out.push_back(static_cast<char>('0' + ((character >> shift) & 7)));
    }
}

void appendQuoted(std::string& out, std::string_view text)
{
    out.push_back('"');
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (character == '"' || character == '\\') {
            out.push_back('\\');
            out.push_back(static_cast<char>(character));
        } else if (character == '\n') {
            out.append("\\n");
        } else if (character == '\t') {
            out.append("\\t");
        } else if (character == '\r') {
            out.append("\\r");
        } else if (character >= 0x20 && character < 0x7F) {
            out.push_back(static_cast<char>(character));
        } else {
            appendEscaped(out, character);
        }
    }
    out.push_back('"');
}

void appendListed(std::string& out, std::string_view text)
{
    if (isPlain(text))
        out.append(text);
    else
        appendQuoted(out, text);
}

// The shortest decimal that reads back as the same number, whatever the process's locale.
std::string realText(double real)
{
    std::string text;
    for (int precision : {15, 16, 17}) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << std::setprecision(precision) << real;
        text = stream.str();
        std::istringstream reader(text);
        reader.imbue(std::locale::classic());
        double readBack = 0;
        if (reader >> readBack && readBack == real)
            break;
    }
    return text;
}

std::string dateText(Date date)
{
    constexpr double referenceDate = 978307200; // seconds after 1970
    constexpr double limit = 6e13;              // some two million years, well inside what gmtime_r takes
    const double seconds = std::isnan(date.secondsSinceReferenceDate) ? 0 : date.secondsSinceReferenceDate;
    const auto time = static_cast<std::time_t>(std::floor(std::clamp(seconds, -limit, limit) + referenceDate));
    std::tm parts = {};
    gmtime_r(&time, &parts);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
    return {text, length};
}

std::string dataText(const Data& data)
{
    std::string text = "<";
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (i != 0 && i % 4 == 0)
            text.push_back(' ');
        text.push_back(hexadecimal[data[i] >> 4]);
        text.push_back(hexadecimal[data[i] & 0xF]);
    }
    text.push_back('>');
    return text;
}

std::string integerText(auto integer)
{
    char digits[24];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), integer);
    return {digits, end};
}

std::string scalarText(const PropertyList& value)
{
    switch (value.type()) {
    case PropertyList::Type::Real:
        return realText(value.realValue());
    case PropertyList::Type::Date:
        return dateText(*value.date());
    case PropertyList::Type::Data:
        return dataText(*value.data());
    case PropertyList::Type::UID:
        return "<CFKeyedArchiverUID>{value = " + integerText(value.uid()->index) + "}";
    case PropertyList::Type::Unsigned:
        return integerText(*value.unsignedInteger());
    default:
        return integerText(value.integerValue());
    }
}

void appendElement(std::string& out, const PropertyList& value, std::size_t level);

// A collection brings its own indentation, also when it stands behind a key: the listing's well-known look.
void appendArray(std::string& out, const Array& array, std::size_t level)
{
    out.append(4 * level, ' ').append("(");
    for (std::size_t i = 0; i < array.size(); ++i) {
        out.append(i == 0 ? "\n" : ",\n").append(4 * (level + 1), ' ');
        appendElement(out, array[i], level + 1);
    }
    out.append("\n").append(4 * level, ' ').append(")");
}

void appendDictionary(std::string& out, const Dictionary& dictionary, std::size_t level)
{
    std::vector<std::pair<std::string_view, const PropertyList*>> entries;
    entries.reserve(dictionary.size());
    for (const auto& [key, value] : dictionary)
        entries.emplace_back(key, &value);
    std::ranges::sort(entries, {}, [](const auto& entry) { return entry.first; });
    out.append(4 * level, ' ').append("{");
    for (const auto& [key, value] : entries) {
        out.append("\n").append(4 * (level + 1), ' ');
        appendListed(out, key);
        out.append(" = ");
        appendElement(out, *value, level + 1);
        out.append(";");
    }
    out.append("\n").append(4 * level, ' ').append("}");
}

void appendElement(std::string& out, const PropertyList& value, std::size_t level)
{
    if (const Array* array = value.array())
        appendArray(out, *array, level);
    else if (const Dictionary* dictionary = value.dictionary())
        appendDictionary(out, *dictionary, level);
    else if (const std::string* string = value.string())
        appendListed(out, *string);
    else if (value.data())
        out.append(scalarText(value));
    else
        appendListed(out, scalarText(value));
}

} // namespace

void appendDescription(std::string& out, const PropertyList& value)
{
    if (const std::string* string = value.string())
        out.append(*string);
    else if (value.array() || value.dictionary())
        appendElement(out, value, 0);
    else
        out.append(scalarText(value));
}

std::string description(const PropertyList& value)
{
    std::string text;
    appendDescription(text, value);
    return text;
}

} // namespace platform
