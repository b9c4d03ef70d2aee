#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace platform {

// Follows a JSON array while it arrives: where it can be cut between elements into parts of moderate length, and
// whether it has ceased to look like an array. It judges brackets, strings and the characters between them; what is in
// them is for the parser.
class JSONArrayScanner {
public:
    static constexpr std::size_t PartLength = std::size_t(256) << 10;
    static constexpr std::size_t GreatestDepth = 1000;

    enum class State { Open, Complete, NotAnArray, UnknownCharacter, NestedTooDeeply, CharactersFollow };

    // `part` is what has arrived since the last cut. The offset of the comma to cut at, from which on the next part is;
    // nullopt when there is none yet.
    std::optional<std::size_t> nextCut(std::string_view part);

    State state() const { return _state; }
    bool isBroken() const { return _state > State::Complete; }
    // Whether nothing but space has come.
    bool isBlank() const { return _isBlank; }

private:
    void skipString(std::string_view part);
    // Whether it is a comma between elements.
    bool scanOutside(char character);

    std::size_t _position = 0;    // in the part
    std::size_t _stringStart = 0; // in the part, after the opening quotation mark
    std::size_t _depth = 0;
    bool _inString = false;
    bool _isBlank = true;
    State _state = State::Open;
};

} // namespace platform
