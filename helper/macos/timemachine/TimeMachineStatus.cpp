#include "helper/macos/timemachine/TimeMachineStatus.h"

#include "platform/IntegerText.h"
#include "platform/PropertyListCoding.h"
#include "platform/Texts.h"

#include <algorithm>
#include <array>

namespace helper {

namespace {

constexpr std::string_view noPhase = "BackupNotRunning";
constexpr std::array<std::string_view, 5> copyingPhases{"Copying", "LazyThinning", "Finishing", "ThinningPostBackup",
                                                        "DeletingOldBackups"};

// Texts of this style are all that there is, and 1 is one of them.
bool isSet(const platform::PropertyList& value)
{
    return value.string() ? platform::integerOfText(*value.string()) != 0 : value.boolValue();
}

} // namespace

bool TimeMachineStatus::isCopying() const
{
    return std::ranges::find(copyingPhases, phase) != copyingPhases.end();
}

std::optional<TimeMachineStatus> TimeMachineStatus::inOutput(std::string_view output)
{
    const auto open = output.find('{');
    const auto close = output.rfind('}');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    const auto value = platform::propertyListWithOldStyleText(output.substr(open, close - open + 1));
    const auto* const content = value ? value->dictionary() : nullptr;
    if (!content)
        return std::nullopt;
    TimeMachineStatus status;
    status.phase = platform::textForKey(*content, "BackupPhase");
    const auto* const running = content->find("Running");
    const auto* const stopping = content->find("Stopping");
    if (!running && status.phase.empty())
        return std::nullopt;
    status.isRunning = running ? isSet(*running) : status.phase != noPhase;
    status.isStopping = status.isRunning && stopping && isSet(*stopping);
    return status;
}

} // namespace helper
