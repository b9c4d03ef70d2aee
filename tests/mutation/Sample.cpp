// What script/mutate is tried on: prints one line for each function.
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

inline constexpr const char* key = "Key";
constexpr int limit = 10;
static_assert(sizeof(int) == 4);

enum class Kind { First = 0, Second = 1 };

struct Value {
    std::array<int, 3> numbers{};
    bool isSet = true;
};
static_assert(Value().isSet);

bool isBelow(int value)
{
    return value < limit;
}

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::First:
        return "first";
    default:
        return "other";
    }
}

std::optional<int> found(const std::vector<int>& values, int wanted)
{
    for (const int value : values) {
        if (value == wanted)
            return value;
    }
    return std::nullopt;
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        if (const auto length = word.size())
            text.append(word);
    }
    return text;
}

constexpr bool isBoth(bool a, bool b)
{
    return a && b;
}

int counted(int to)
{
    int count = 0;
    for (int i = 0; i < to; ++i)
        count += 2;
    return count;
}

} // namespace

int main()
{
    std::printf("%s %d %d\n", key, isBelow(9), isBelow(10));
    std::printf("%s %s %d\n", nameOf(Kind::First), nameOf(Kind::Second), Value().isSet);
    std::printf("%d %d\n", found({1, 2}, 2).value_or(-7), found({1, 2}, 3).value_or(-7));
    std::printf("%s\n", joined({"a", "", "b"}).c_str());
    std::printf("%d%d%d\n", isBoth(true, true), isBoth(true, false), isBoth(false, false));
    std::printf("%d\n", counted(3));
}
