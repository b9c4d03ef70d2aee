#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform {

// Follows a JSON array while it arrives: where it can be cut between elements into parts of moderate length, and
// whether it has ceased to look like an array. It judges brackets, strings and the characters between them; what is in
// them is for the parser.
class JSONArrayScanner {
public:
    static constexpr std::size_t PartLength = std::size_t(256) << 10;
    static constexpr std::size_t GreatestDepth = 1000;

    // `text` is what has arrived, the part that was given before included.
    void scan(std::string_view text);

    bool isBroken() const { return _broken; }
    bool isComplete() const { return _complete && !_broken; }
    // The offsets of the opening bracket, of the commas at which to cut, and of the closing bracket.
    const std::vector<std::size_t>& cuts() const { return _cuts; }

private:
    void skipString(std::string_view text);
    void scanOutside(char character);
    void close();

    std::vector<std::size_t> _cuts;
    std::size_t _position = 0;
    std::size_t _stringStart = 0; // after the opening quotation mark
    std::size_t _depth = 0;
    bool _inString = false;
    bool _complete = false;
    bool _broken = false;
};

} // namespace platform
