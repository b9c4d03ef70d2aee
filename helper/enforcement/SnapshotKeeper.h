#pragma once

#include "helper/enforcement/SnapshotPlan.h"
#include "helper/PropertyListFile.h"
#include "helper/snapshots/LocalSnapshots.h"
#include "platform/Clock.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace helper {

// Makes local snapshots of the chosen volumes while the settings want them, and removes its own old ones. Any thread;
// the work is done on a queue of its own.
class SnapshotKeeper {
public:
    // The list of what was made is kept in the file. The folders to be protected are asked for at each look: their
    // volumes are the chosen ones.
    SnapshotKeeper(const std::string& path, std::function<std::vector<std::string>()> folders,
                   std::shared_ptr<LocalSnapshots> snapshots);
    ~SnapshotKeeper();
    SnapshotKeeper(const SnapshotKeeper&) = delete;
    SnapshotKeeper& operator=(const SnapshotKeeper&) = delete;

    void setEnabled(bool isEnabled);
    // The folders are others.
    void look();
    // Nothing is made or removed any more. False when what is being done takes longer than the limit.
    bool stop(std::chrono::milliseconds limit);

private:
    struct Work;
    const std::shared_ptr<platform::Queue> _queue;
    const std::shared_ptr<Work> _work;
};

} // namespace helper
