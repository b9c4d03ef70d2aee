#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// The first character of a JSON text that is no space. Blank: there is none. An array begins with a bracket.
enum class JSONBeginning : std::uint8_t { Blank, Bracket, Other };

constexpr JSONBeginning jsonBeginning(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return JSONBeginning::Blank;
    return text[first] == '[' ? JSONBeginning::Bracket : JSONBeginning::Other;
}

} // namespace platform
