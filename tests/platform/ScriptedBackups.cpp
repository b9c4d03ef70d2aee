#include "tests/platform/ScriptedBackups.h"

#include "platform/Queue.h"
#include "platform/RunningBackup.h"

#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>

namespace scripted::backups {

namespace {

using platform::BackupEvent;

template <class Handler>
struct Follower {
    std::shared_ptr<platform::Queue> queue;
    Handler handler;
    std::atomic<bool> isStopped = false;
};
using RunnerFollower = Follower<platform::BackupRunner::Handler>;
using LockFollower = Follower<std::function<void()>>;

struct Machine {
    std::mutex mutex;
    std::vector<platform::BackupJob> started;
    std::optional<platform::Error> startFailure;
    std::function<void(const platform::BackupJob&)> startObserver;
    std::optional<std::string> running;
    std::optional<BackupEvent> lastEnd;
    bool isLockHeld = false;
    std::list<std::shared_ptr<RunnerFollower>> runners;
    std::list<std::shared_ptr<LockFollower>> locks;

    static Machine& shared()
    {
        static auto& machine = *new Machine;
        return machine;
    }

    void tell(const BackupEvent& event) const
    {
        for (const auto& runner : runners) {
            runner->queue->async([runner, event] {
                if (!runner->isStopped)
                    runner->handler(event);
            });
        }
    }
};

class ScriptedRunner final : public platform::BackupRunner {
public:
    ScriptedRunner(std::shared_ptr<platform::Queue> queue, Handler handler)
        : _follower(std::make_shared<RunnerFollower>(std::move(queue), std::move(handler)))
    {
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().runners.push_back(_follower);
    }
    ~ScriptedRunner() override
    {
        _follower->isStopped = true;
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().runners.remove(_follower);
    }

    platform::Result<void> start(const platform::BackupJob& job) override
    {
        auto& machine = Machine::shared();
        const std::lock_guard lock(machine.mutex);
        if (machine.startFailure)
            return std::unexpected(*machine.startFailure);
        if (machine.running)
            return std::unexpected(platform::Error{platform::POSIXErrorDomain, EBUSY, {}, nullptr});
        if (machine.startObserver)
            machine.startObserver(job);
        machine.started.push_back(job);
        machine.running = job.identifier;
        return {};
    }
    std::optional<std::string> running() const override
    {
        const std::lock_guard lock(Machine::shared().mutex);
        return Machine::shared().running;
    }
    std::optional<BackupEvent> lastEnd() const override
    {
        const std::lock_guard lock(Machine::shared().mutex);
        return Machine::shared().lastEnd;
    }

private:
    std::shared_ptr<RunnerFollower> _follower;
};

class ScriptedLock final : public platform::Condition<platform::RunningBackup> {
public:
    ScriptedLock(std::shared_ptr<platform::Queue> queue, Handler handler)
        : _follower(std::make_shared<LockFollower>(std::move(queue), std::move(handler)))
    {
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().locks.push_back(_follower);
    }
    ~ScriptedLock() override
    {
        _follower->isStopped = true;
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().locks.remove(_follower);
    }
    platform::RunningBackup current() const override
    {
        const std::lock_guard lock(Machine::shared().mutex);
        return {Machine::shared().isLockHeld};
    }

private:
    std::shared_ptr<LockFollower> _follower;
};

void endRunning(std::optional<int> status, const std::string& reason, bool leavesTrace)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    if (!machine.running)
        return;
    const BackupEvent event{
        .kind = BackupEvent::Kind::Ended, .identifier = *machine.running, .status = status, .reason = reason};
    machine.running.reset();
    if (leavesTrace)
        machine.lastEnd = event;
    machine.tell(event);
}

} // namespace

void reset()
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.started.clear();
    machine.startFailure.reset();
    machine.startObserver = nullptr;
    machine.running.reset();
    machine.lastEnd.reset();
    machine.isLockHeld = false;
    for (const auto& runner : machine.runners)
        runner->isStopped = true;
    for (const auto& follower : machine.locks)
        follower->isStopped = true;
    machine.runners.clear();
    machine.locks.clear();
}

std::vector<platform::BackupJob> started()
{
    const std::lock_guard lock(Machine::shared().mutex);
    return Machine::shared().started;
}

void setStartFailure(std::optional<platform::Error> error)
{
    const std::lock_guard lock(Machine::shared().mutex);
    Machine::shared().startFailure = std::move(error);
}

void setStartObserver(std::function<void(const platform::BackupJob&)> observer)
{
    const std::lock_guard lock(Machine::shared().mutex);
    Machine::shared().startObserver = std::move(observer);
}

void end(std::optional<int> status, const std::string& reason)
{
    endRunning(status, reason, true);
}

void vanish()
{
    endRunning(std::nullopt, {}, false);
}

void becomeOverdue()
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    if (machine.running)
        machine.tell({.kind = BackupEvent::Kind::Overdue, .identifier = *machine.running, .status = {}});
}

void setLockHeld(bool isHeld)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.isLockHeld = isHeld;
    for (const auto& follower : machine.locks) {
        follower->queue->async([follower] {
            if (!follower->isStopped)
                follower->handler();
        });
    }
}

} // namespace scripted::backups

namespace platform {

std::unique_ptr<BackupRunner> BackupRunner::create(std::shared_ptr<Queue> queue, Handler handler)
{
    return std::make_unique<scripted::backups::ScriptedRunner>(std::move(queue), std::move(handler));
}

bool isBackupRunning()
{
    const std::lock_guard lock(scripted::backups::Machine::shared().mutex);
    return scripted::backups::Machine::shared().isLockHeld;
}

FollowedCondition<RunningBackup> followRunningBackup(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<scripted::backups::ScriptedLock>(std::move(queue), std::move(handler));
}

} // namespace platform
