#pragma once

#include "helper/enforcement/EnforcementLoop.h"

#include <functional>
#include <memory>

namespace helper {

// The enforcement of the schedule, on a queue of its own. Any thread; never waits.
class Enforcer {
public:
    using Completion = std::function<void(platform::Result<platform::PropertyList>)>;

    explicit Enforcer(EnforcementParts parts);
    ~Enforcer();
    Enforcer(const Enforcer&) = delete;
    Enforcer& operator=(const Enforcer&) = delete;

    // The record was stored.
    void apply(const ScheduleSettings& record);
    // The backup program, or the work on the installation.
    void conditionsChanged();

    void startNow(Completion completion);
    void status(Completion completion);

    // Nothing is started any more; what runs runs on. False when what is being done now takes longer than the limit.
    // Everything asked later is forgotten.
    bool stop(std::chrono::milliseconds limit);

private:
    struct Holder;
    void onLoop(std::function<void(EnforcementLoop&)> task);

    const std::shared_ptr<platform::Queue> _queue;
    const std::shared_ptr<Holder> _holder;
};

} // namespace helper
