#include "scheduling/Reasons.h"

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

} // namespace scheduling
