#include "helper/enforcement/SnapshotPlan.h"

#include "helper/enforcement/Journal.h"

#include <algorithm>

namespace helper {

using platform::Dictionary;
using scheduling::Instant;

namespace {

constexpr std::int64_t snapshotPause = 3'600;
constexpr std::int64_t snapshotAge = 86'400;

bool isNewest(const MadeSnapshot& snapshot, const std::vector<MadeSnapshot>& made)
{
    return std::ranges::none_of(
        made, [&](const MadeSnapshot& other) { return other.volume == snapshot.volume && other.at > snapshot.at; });
}

std::optional<Instant> lastOf(const std::string& volume, const std::vector<MadeSnapshot>& made,
                              const std::vector<SnapshotPlan::Attempt>& tried)
{
    std::optional<Instant> last;
    for (const auto& snapshot : made) {
        if (snapshot.volume == volume)
            last = std::max(last.value_or(snapshot.at), snapshot.at);
    }
    for (const auto& attempt : tried) {
        if (attempt.volume == volume)
            last = std::max(last.value_or(attempt.at), attempt.at);
    }
    return last;
}

} // namespace

Dictionary MadeSnapshot::dictionary() const
{
    return {{"Volume", volume}, {"Path", path}, {"Identifier", identifier}, {"At", dateOf(at)}};
}

std::optional<MadeSnapshot> MadeSnapshot::inDictionary(const Dictionary& dictionary)
{
    const auto* const volume = dictionary.stringForKey("Volume");
    const auto* const path = dictionary.stringForKey("Path");
    const auto* const identifier = dictionary.stringForKey("Identifier");
    const auto at = instantOf(dictionary.find("At"));
    if (!volume || !path || !identifier || !at)
        return std::nullopt;
    return MadeSnapshot{*volume, *path, *identifier, *at};
}

SnapshotPlan SnapshotPlan::at(Instant now, const std::vector<std::string>& volumes,
                              const std::vector<MadeSnapshot>& made, const std::vector<Attempt>& tried)
{
    SnapshotPlan plan;
    const auto lookAt = [&](Instant instant) { plan.next = std::min(plan.next.value_or(instant), instant); };
    for (const auto& volume : volumes) {
        const auto last = lastOf(volume, made, tried);
        const bool isDue = !last || *last + snapshotPause <= now;
        if (isDue)
            plan.make.push_back(volume);
        lookAt((isDue ? now : *last) + snapshotPause);
    }
    for (const auto& snapshot : made) {
        if (isNewest(snapshot, made))
            continue;
        if (snapshot.at + snapshotAge < now)
            plan.remove.push_back(snapshot);
        else
            lookAt(snapshot.at + snapshotAge + 1);
    }
    return plan;
}

} // namespace helper
