#include "tests/platform/ScriptedPowerSources.h"

#include <atomic>

namespace scripted::power {

namespace {

enum class Answer { None, No, Yes };
std::atomic<Answer> answer = Answer::None;

} // namespace

void reset()
{
    setSupportsBattery(std::nullopt);
}

void setSupportsBattery(std::optional<bool> supports)
{
    answer = !supports ? Answer::None : *supports ? Answer::Yes : Answer::No;
}

} // namespace scripted::power

namespace platform {

std::optional<bool> supportsBatteryPower()
{
    using scripted::power::Answer;
    const auto current = scripted::power::answer.load();
    return current == Answer::None ? std::nullopt : std::optional(current == Answer::Yes);
}

} // namespace platform
