#include "platform/RunningBackup.h"

#include "helper/macos/timemachine/TimeMachineWatch.h"

namespace platform {

namespace {

class RunningTimeMachine final : public Condition<RunningBackup> {
public:
    RunningTimeMachine(std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _watch(helper::TimeMachineTool(), std::move(queue), std::move(handler), {})
    {
    }

    // Asked for now, since the system does not tell.
    RunningBackup current() const override { return {.isRunning = _watch.isRunning()}; }

private:
    helper::TimeMachineWatch _watch;
};

} // namespace

bool isBackupRunning()
{
    const auto status = helper::TimeMachineTool().status();
    return status && status->isRunning;
}

FollowedCondition<RunningBackup> followRunningBackup(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<RunningTimeMachine>(std::move(queue), std::move(handler));
}

} // namespace platform
