#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace helper {

// A version such as "1.0.12": one to eight numbers between dots. Zeros at the end do not count.
class VersionNumber {
public:
    static std::optional<VersionNumber> parse(std::string_view text);

    std::strong_ordering operator<=>(const VersionNumber& other) const { return _numbers <=> other._numbers; }
    bool operator==(const VersionNumber& other) const { return _numbers == other._numbers; }

private:
    std::vector<std::uint32_t> _numbers;
};

} // namespace helper
