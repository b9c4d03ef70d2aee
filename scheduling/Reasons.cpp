#include "scheduling/Reasons.h"

#include <algorithm>

namespace scheduling {

namespace {

constexpr std::array<std::string_view, 9> reasonNames{
    "suspended", "battery", "passive", "sleepPreventers", "notWired", "running", "maintenance", "noProgram", "asleep",
};

} // namespace

std::vector<std::string_view> Reasons::names() const
{
    std::vector<std::string_view> names;
    for (std::size_t index = 0; index < reasonNames.size(); ++index) {
        if (has(static_cast<Reason>(index)))
            names.push_back(reasonNames[index]);
    }
    return names;
}

std::optional<Reason> Reasons::named(std::string_view name)
{
    const auto found = std::ranges::find(reasonNames, name);
    if (found == reasonNames.end())
        return std::nullopt;
    return static_cast<Reason>(found - reasonNames.begin());
}

} // namespace scheduling
