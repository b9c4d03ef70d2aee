#include "diagnostics/console/RichText.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace platform;

namespace {

// "\uN\'3f": every UTF-16 unit as a signed number, and the question mark that a reader without Unicode shows. It is
// written as an escape, since readers take a character that stands there for part of the text.
void appendUnit(std::string& out, unsigned unit)
{
    out.append("\\u").append(std::to_string(static_cast<std::int16_t>(unit))).append("\\'3f");
}

void appendCharacterTo(std::string& out, char32_t character)
{
    if (character == 0xA0)
        out += "\\~";
    else if (character < 0x10000)
        appendUnit(out, character);
    else {
        appendUnit(out, platform::highSurrogateOf(character));
        appendUnit(out, platform::lowSurrogateOf(character));
    }
}

bool isPlain(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return code >= 0x20 && code < 0x7F && character != '\\' && character != '{' && character != '}';
}

void appendEscapedText(std::string& out, std::string_view text)
{
    while (!text.empty()) {
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(text, isPlain) - text.begin());
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            return;
        const char32_t character = takeCharacter(text);
        if (character == '\n')
            out += "\\par\n";
        else if (character == '\t')
            out += "\\tab ";
        else if (character == '\\' || character == '{' || character == '}')
            out.append("\\").append(1, static_cast<char>(character));
        else
            appendCharacterTo(out, character);
    }
}

// A font's name must not end the entry that it stands in.
std::string fontName(const std::string& family)
{
    std::string name;
    std::string_view rest = family;
    while (!rest.empty()) {
        const char32_t character = takeCharacter(rest);
        if (character >= 0x80)
            appendCharacterTo(name, character);
        else if (character >= 0x20 && character != ';' && character != '\\' && character != '{' && character != '}')
            name += static_cast<char>(character);
    }
    return name;
}

int component(double value)
{
    return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

// The colours of a document, of which the number 0 is the reader's own.
class ColorTable {
public:
    std::size_t number(const std::optional<Color>& color)
    {
        if (!color || *color == Color(NamedColor::Text))
            return 0;
        const auto found = std::ranges::find(_colors, *color);
        const auto place = static_cast<std::size_t>(found - _colors.begin());
        if (found == _colors.end())
            _colors.push_back(*color);
        return place + 1;
    }

    std::string text() const
    {
        std::string table = "{\\colortbl;";
        for (const auto& color : _colors) {
            const auto fixed = ui::resolvedColor(color, ui::Appearance::Light);
            table.append("\\red").append(std::to_string(component(fixed.red)));
            table.append("\\green").append(std::to_string(component(fixed.green)));
            table.append("\\blue").append(std::to_string(component(fixed.blue))).append(";");
        }
        return table + "}\n";
    }

private:
    std::vector<Color> _colors;
};

} // namespace

std::string richText(const StyledText& text, const ui::FontDescription& fixedPitchFont)
{
    ColorTable colors;
    std::string body;
    body.reserve(text.size() + text.size() / 4);
    text.visitRuns(0, text.size(), [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
        body.append("\\f").append(attributes.font ? "1" : "0");
        body.append("\\cf").append(std::to_string(colors.number(attributes.foreground))).append(" ");
        appendEscapedText(body, std::string_view(text.string()).substr(begin, end - begin));
    });
    std::string document = "{\\rtf1\\ansi\\ansicpg1252\\deff0\n"
                           "{\\fonttbl{\\f0\\fswiss\\fcharset0 Helvetica;}{\\f1\\fmodern\\fcharset0 ";
    document.append(fontName(fixedPitchFont.family)).append(";}}\n").append(colors.text());
    const auto halfPoints = std::lround(2 * fixedPitchFont.pointSize);
    document.append("\\pard\\uc1\\fs").append(std::to_string(halfPoints)).append("\n");
    return document + body + "}\n";
}
