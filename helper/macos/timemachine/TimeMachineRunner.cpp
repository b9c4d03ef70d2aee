#include "helper/macos/timemachine/TimeMachineRunner.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/macos/timemachine/BackupNote.h"
#include "helper/PropertyListFile.h"
#include "messaging/ZRKError.h"
#include "platform/Clock.h"
#include "platform/Folder.h"
#include "platform/Queue.h"
#include "platform/QueueTelling.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace helper {

using platform::BackupEvent;
using platform::BackupJob;
using platform::ClockTimer;
using platform::Dictionary;
using platform::Error;
using platform::Result;

namespace {

bool isNote(const Dictionary& content)
{
    return BackupNote::inDictionary(content).has_value();
}

} // namespace

// On a queue of its own, except for what is told.
struct TimeMachineRunner::State : std::enable_shared_from_this<State> {
    State(Parts given, std::shared_ptr<platform::Queue> toldOn, Handler handler)
        : parts(std::move(given)),
          file(parts.file, isNote)
    {
        telling.emplace(std::move(toldOn), std::move(handler));
        (void)platform::createFolder(platform::parentOf(parts.file));
        const auto content = file.open();
        note = content ? BackupNote::inDictionary(*content) : std::nullopt;
    }

    // The timers can hold nothing but a weak reference.
    void begin()
    {
        const auto timerFor = [this](void (State::*task)()) {
            return ClockTimer::create(ClockTimer::Clock::SinceBoot, queue, [weak = weak_from_this(), task] {
                if (const auto state = weak.lock())
                    ((*state).*task)();
            });
        };
        next = timerFor(&State::look);
        overdue = timerFor(&State::tellOverdue);
        if (note && !note->hasEnded) {
            setRunning(note->identifier);
            startedAt = platform::readClocks().sinceBoot;
            look();
        }
    }

    void stop()
    {
        next.reset();
        overdue.reset();
        telling.reset();
    }

    Result<void> start(const BackupJob& job)
    {
        if (running())
            return std::unexpected(Error{platform::POSIXErrorDomain, EBUSY, {}, nullptr});
        const auto clocks = platform::readClocks();
        const auto memory = parts.memory();
        BackupNote begun{.identifier = job.identifier, .trace = {}, .hasEnded = false, .outcome = {}};
        begun.trace.began = std::chrono::floor<std::chrono::seconds>(clocks.sinceEpoch).count();
        begun.trace.newestBefore = memory ? memory->newest : std::nullopt;
        setNote(std::move(begun));
        if (auto started = parts.tool.start(job.commands.front()); !started) {
            setEnd({.status = EXIT_FAILURE, .reason = started.error() + "."});
            return std::unexpected(Error{platform::POSIXErrorDomain,
                                         EIO,
                                         {{platform::LocalizedDescriptionKey, started.error() + "."}},
                                         nullptr});
        }
        setRunning(job.identifier);
        startedAt = clocks.sinceBoot;
        endedAt.reset();
        if (job.overdueAfter)
            overdue->set(clocks.sinceBoot + *job.overdueAfter);
        next->set(clocks.sinceBoot + parts.pause / 5); // it may be over soon
        return {};
    }

    // As long as it does not answer nothing is known to have ended.
    void look()
    {
        if (!next || !running())
            return;
        const auto status = parts.tool.status();
        const auto now = platform::readClocks().sinceBoot;
        if (status && status->isRunning) {
            follow(*status);
            endedAt.reset();
        } else if (status && !isSettled(now)) {
            endedAt = endedAt.value_or(now);
        } else if (status) {
            return;
        }
        next->set(now + (endedAt ? parts.pause / 5 : parts.pause));
    }

    void follow(const TimeMachineStatus& status)
    {
        auto changed = *note;
        changed.trace.wasRunning = true;
        changed.trace.wasCopying = changed.trace.wasCopying || status.isCopying();
        changed.trace.wasStopping = changed.trace.wasStopping || status.isStopping;
        if (changed != *note)
            setNote(std::move(changed));
    }

    // Whether it is known how a backup came out that does not run (any more): Time Machine may be about to begin it, or
    // to remember it.
    bool isSettled(std::chrono::nanoseconds now)
    {
        const auto memory = parts.memory();
        auto outcome = BackupOutcome::of(note->trace, memory);
        const auto waitedSince = note->trace.wasRunning ? endedAt.value_or(now) : startedAt;
        const bool mayChange = outcome.status != 0 && !note->trace.wasStopping && (memory || !note->trace.wasRunning);
        if (mayChange && now - waitedSince < parts.patience)
            return false;
        setEnd(std::move(outcome));
        end();
        return true;
    }

    void setEnd(BackupOutcome outcome)
    {
        auto ended = *note;
        ended.hasEnded = true;
        ended.outcome = std::move(outcome);
        setNote(std::move(ended));
    }

    void end()
    {
        overdue->set(std::nullopt);
        setRunning(std::nullopt);
        if (const auto event = lastEnd())
            telling->tell(*event);
    }

    void tellOverdue()
    {
        if (const auto name = running(); name && telling)
            telling->tell({.kind = BackupEvent::Kind::Overdue, .identifier = *name, .status = {}});
    }

    // Also from other threads:

    std::optional<std::string> running() const
    {
        const std::lock_guard guard(lock);
        return identifier;
    }

    std::optional<BackupEvent> lastEnd() const
    {
        const std::lock_guard guard(lock);
        if (!note || !note->hasEnded)
            return std::nullopt;
        return BackupEvent{.kind = BackupEvent::Kind::Ended,
                           .identifier = note->identifier,
                           .status = note->outcome.status,
                           .reason = note->outcome.reason};
    }

    void setRunning(std::optional<std::string> name)
    {
        const std::lock_guard guard(lock);
        identifier = std::move(name);
    }

    // A full disk is no reason to make no backup.
    void setNote(BackupNote changed)
    {
        if (const auto written = file.write(changed.dictionary()); !written)
            ZRKError::log(written.error());
        const std::lock_guard guard(lock);
        note = std::move(changed);
    }

    const Parts parts;
    PropertyListFile file;
    const std::shared_ptr<platform::Queue> queue =
        platform::Queue::createSerial("com.zerkolin.brevane.scheduler.backup");
    std::optional<platform::QueueTelling<BackupEvent>> telling;
    std::unique_ptr<ClockTimer> next;
    std::unique_ptr<ClockTimer> overdue;
    std::chrono::nanoseconds startedAt{0};
    std::optional<std::chrono::nanoseconds> endedAt; // when it was first seen not to run any more
    mutable std::mutex lock;                         // of what follows, where another thread reads it
    std::optional<std::string> identifier;           // of the one that runs
    std::optional<BackupNote> note;
};

TimeMachineRunner::TimeMachineRunner(Parts parts, std::shared_ptr<platform::Queue> queue, Handler handler)
    : _state(std::make_shared<State>(std::move(parts), std::move(queue), std::move(handler)))
{
    _state->queue->sync([state = _state] { state->begin(); });
}

TimeMachineRunner::~TimeMachineRunner()
{
    _state->queue->sync([state = _state] { state->stop(); });
}

Result<void> TimeMachineRunner::start(const BackupJob& job)
{
    Result<void> result;
    _state->queue->sync([&] { result = _state->start(job); });
    return result;
}

std::optional<std::string> TimeMachineRunner::running() const
{
    return _state->running();
}

std::optional<BackupEvent> TimeMachineRunner::lastEnd() const
{
    return _state->lastEnd();
}

} // namespace helper
