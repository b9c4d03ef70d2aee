#include "helper/enforcement/EnforcementLoop.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/enforcement/EnforcementWords.h"
#include "helper/enforcement/StatusReply.h"
#include "helper/SettingsValidator.h"
#include "protocol/BackupProgram.h"
#include "protocol/BackupStatus.h"
#include "protocol/ErrorCodes.h"
#include "scheduling/InstantText.h"

#include <algorithm>
#include <random>
#include <utility>

namespace helper {

using platform::BackupEvent;
using platform::ClockEvent;
using platform::ClockTimer;
using platform::Error;
using platform::Result;
using scheduling::Instant;
using scheduling::Now;
using scheduling::Scheduler;

namespace {

// The longest that a computer may take to fall asleep once it was announced.
constexpr std::chrono::seconds wakeLimit{60};
// A backup may be on its way while nobody watches, when the helper ends between its start and its first sign of life.
constexpr std::int64_t startedJustNow = 60;
// By then it has begun and says so, or never will.
constexpr std::chrono::seconds lifeLimit{30};
static_assert(lifeLimit >= platform::BackupRunner::BeginLimit + std::chrono::seconds(10));

constexpr std::size_t durationsKept = 9;
constexpr std::chrono::minutes shortestOverdue{10};

platform::TimeZone zoneNamed(const std::string& name)
{
    auto zone = platform::TimeZone::named(name);
    return zone ? std::move(*zone) : platform::TimeZone::named("UTC").value();
}

// A name that tells a person when the backup was made, and no other backup has.
std::string newIdentifier(const scheduling::LocalClock& clock, Instant now)
{
    static constexpr char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string name = scheduling::localTextOfInstant(clock, now).substr(0, 19); // "2026-10-25T02:30:00"
    std::ranges::replace(name, ':', '-');
    std::random_device random;
    name += '-';
    for (int count = 0; count < 6; ++count)
        name += digits[std::uniform_int_distribution<int>(0, sizeof digits - 2)(random)];
    return name;
}

// Longer than a backup can be expected to take; nothing as long as nobody knows.
std::optional<std::chrono::seconds> overdueAfter(std::vector<std::int64_t> durations)
{
    if (durations.empty())
        return std::nullopt;
    std::ranges::sort(durations);
    return std::max<std::chrono::seconds>(std::chrono::seconds(2 * durations[durations.size() / 2]), shortestOverdue);
}

} // namespace

EnforcementLoop::EnforcementLoop(EnforcementParts parts, std::shared_ptr<platform::Queue> queue)
    : _parts(std::move(parts)),
      _file(_parts.statePath),
      _state(_file.found().value_or(EnforcementState())),
      _machine(queue, [this] { happen(); }),
      _notifier(BRVDidChangeBackupStatus, queue),
      _runner(platform::BackupRunner::create(queue, [this](const BackupEvent& event) { backupEvent(event); })),
      _timer(ClockTimer::create(ClockTimer::Clock::SinceEpoch, queue, [this] { happen(); })),
      _wakeLimit(ClockTimer::create(ClockTimer::Clock::SinceBoot, queue, [this] { clockEvent(ClockEvent::DidWake); })),
      _lifeLimit(ClockTimer::create(ClockTimer::Clock::SinceBoot, queue,
                                    [this] {
                                        const Now now = catchUp();
                                        resumeBackup(now, false);
                                        settle(now);
                                    })),
      _clockWatch(platform::ClockWatch::create(queue, [this](ClockEvent event) { clockEvent(event); })),
      _scheduler(makeScheduler()),
      _present(_clocks.read().now.clock)
{
    const Now now = catchUp();
    catchUpWithStored(now);
    settle(now);
}

EnforcementLoop::~EnforcementLoop() = default;

Scheduler EnforcementLoop::makeScheduler()
{
    const Now now = _clocks.read().now;
    scheduling::Conditions conditions;
    _machine.read(conditions, _clocks);
    if (!_file.found())
        return {_parts.record, zoneNamed(platform::timeZoneName()), conditions, now};
    return {_state.record, zoneNamed(_state.zone), conditions, _state.memory, now};
}

// What happened while nobody watched.
void EnforcementLoop::catchUpWithStored(Now now)
{
    if (!_file.found())
        return;
    if (_file.foundWritten() > now.clock)
        _scheduler.clockWasSet(_file.foundWritten(), now);
    resumeBackup(now, true);
    setZone(now);
    _scheduler.apply(_parts.record, now);
}

// Of the backup that was started last, and has not ended as far as is known.
void EnforcementLoop::resumeBackup(Now now, bool mayComeToLife)
{
    const auto& memory = _scheduler.memory();
    if (!memory.runs())
        return;
    *_parts.isUnderWay = true;
    if (_runner->running() == _state.identifier) {
        holdAwake();
        return;
    }
    const auto last = _runner->lastEnd();
    if (last && last->identifier == _state.identifier)
        end(last->status, last->reason, now);
    else if (mayComeToLife && now.clock - *memory.lastStart < startedJustNow)
        _lifeLimit->set(platform::readClocks().sinceBoot + lifeLimit);
    else
        end(std::nullopt, {}, now);
}

void EnforcementLoop::setZone(Now now)
{
    const auto name = platform::timeZoneName();
    if (const auto zone = platform::TimeZone::named(name))
        _scheduler.setZone(*zone, now);
    else
        ZRKLogMessage(LogLevelError, "The time zone '%@' is not known.", {name});
}

// Events

void EnforcementLoop::apply(const ScheduleSettings& record)
{
    const Now now = catchUp();
    readConditions(now);
    _scheduler.apply(record, now);
    settle(now);
}

void EnforcementLoop::happen()
{
    settle(catchUp());
}

Result<void> EnforcementLoop::startNow()
{
    const Now now = catchUp();
    readConditions(now);
    const auto& conditions = _scheduler.conditions();
    if (_scheduler.rules().backupRuns())
        return std::unexpected(Error{BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr});
    if (conditions.maintenance)
        return std::unexpected(Error{BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr});
    if (conditions.noProgram)
        return std::unexpected(SettingsFault{BRVErrorMissingValue, BackupProgramKey::Program, {}}.error());
    const bool began = start(Scheduler::Start::ByHand, std::nullopt, now);
    const auto failure = std::exchange(_failure, {});
    settle(now);
    if (!began)
        return std::unexpected(Error{BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr});
    if (!failure.empty())
        return std::unexpected(Error{
            ZRKSpawnerErrorDomain, ZRKSpawnerErrorSpawn, {{platform::LocalizedDescriptionKey, failure}}, nullptr});
    return {};
}

void EnforcementLoop::backupEvent(const BackupEvent& event)
{
    const Now now = catchUp();
    const bool isOurs = _scheduler.memory().runs() && event.identifier == _state.identifier;
    if (isOurs && event.kind == BackupEvent::Kind::Ended)
        end(event.status, event.reason, now);
    else if (isOurs)
        ZRKLogMessage(LogLevelError, "The backup takes more than twice its usual time. It is left alone.");
    settle(now);
}

void EnforcementLoop::clockEvent(ClockEvent event)
{
    const Now now = catchUp();
    if (event == ClockEvent::WillSleep && !_asleep) {
        _scheduler.fellAsleep(now);
        _asleep = true;
        _wakeLimit->set(platform::readClocks().sinceBoot + wakeLimit);
    } else if (event == ClockEvent::DidWake && _asleep) {
        wake(now);
    } else if (event == ClockEvent::ZoneChanged) {
        setZone(now);
    }
    settle(now);
}

void EnforcementLoop::wake(Now now)
{
    _scheduler.woke(now);
    _asleep = false;
    _wakeLimit->set(std::nullopt);
}

// Any event may be the first sign of a sleep that is over, or of a clock that was set.
Now EnforcementLoop::catchUp()
{
    const auto reading = _clocks.read();
    if (reading.slept)
        wake({reading.before.value_or(reading.now.clock), reading.now.elapsed});
    if (reading.before && *reading.before != reading.now.clock) {
        ZRKLogMessage(LogLevelDefault, "The clock was set from %@ to %@.",
                      {scheduling::textOfInstant(*reading.before), scheduling::textOfInstant(reading.now.clock)});
        _scheduler.clockWasSet(*reading.before, reading.now);
    }
    return reading.now;
}

// Looking

void EnforcementLoop::settle(Now now)
{
    while (!_asleep) {
        readConditions(now);
        const auto look = _scheduler.look(now);
        tell(look, now);
        if (!look.shouldStart()) {
            _timer->set(look.next ? std::optional(std::chrono::seconds(*look.next)) : std::nullopt);
            break;
        }
        start(Scheduler::Start::Scheduled, look.due, now);
    }
    save(now);
    notify(now);
}

void EnforcementLoop::readConditions(Now now)
{
    auto conditions = _scheduler.conditions();
    _machine.read(conditions, _clocks);
    conditions.otherBackup = conditions.otherBackup && !_scheduler.memory().runs();
    conditions.maintenance = _parts.isMaintenanceAtWork();
    conditions.noProgram = !_parts.program->isReady();
    if (conditions != _scheduler.conditions())
        _scheduler.setConditions(conditions, now);
}

void EnforcementLoop::tell(const scheduling::Look& look, Now now)
{
    const EnforcementWords words(_scheduler.plan().local, now.clock);
    for (const auto& missed : look.missed)
        tell(words.missed(missed, missed.due + scheduling::momentStaysDue < _present));
    if (look.blockedAnew)
        tell(words.blocked(*look.due, look.reasons));
}

void EnforcementLoop::tell(JournalEntry entry)
{
    const bool isGood = entry.event == "start" || entry.succeeded.value_or(false);
    ZRKLogMessage(isGood || entry.event == "blocked" ? LogLevelDefault : LogLevelError, "%@", {entry.text});
    _state.journal.add(std::move(entry));
}

// Backups

bool EnforcementLoop::start(Scheduler::Start how, std::optional<Instant> due, Now now)
{
    *_parts.isUnderWay = true;
    if (_parts.isMaintenanceAtWork()) {
        *_parts.isUnderWay = false;
        return false;
    }
    _scheduler.started(how, now);
    _state.identifier = newIdentifier(_scheduler.plan().local, now.clock);
    _state.program = _parts.program->identifier();
    _startedAt = now.elapsed;
    tell(EnforcementWords(_scheduler.plan().local, now.clock).started(due));
    save(now);
    holdAwake();
    if (auto failure = run(_state.identifier)) {
        fail(*failure, now);
        _failure = std::move(*failure);
    }
    return true;
}

// Nothing when it is under way, otherwise why it is not.
std::optional<std::string> EnforcementLoop::run(const std::string& identifier)
{
    auto job = _parts.program->job(identifier);
    if (!job)
        return std::move(job.error());
    job->overdueAfter = overdueAfter(_state.durations);
    if (const auto started = _runner->start(*job); !started)
        return "It could not be started: " + platform::localizedDescription(started.error());
    return std::nullopt;
}

void EnforcementLoop::end(std::optional<int> status, const std::string& reason, Now now)
{
    if (_parts.program->isSuccess(_state.program, status))
        succeed(now);
    else
        fail(reason.empty() ? EnforcementWords::failureOf(status) : reason, now);
}

void EnforcementLoop::succeed(Now now)
{
    const auto length = _startedAt ? now.elapsed - *_startedAt : now.clock - *_scheduler.memory().lastStart;
    _scheduler.ended(true, now);
    finish();
    _state.durations.push_back(std::max<std::int64_t>(length, 0));
    if (_state.durations.size() > durationsKept)
        _state.durations.erase(_state.durations.begin());
    tell(EnforcementWords(_scheduler.plan().local, now.clock).succeeded(length));
}

void EnforcementLoop::fail(const std::string& why, Now now)
{
    _scheduler.ended(false, now);
    finish();
    tell(EnforcementWords(_scheduler.plan().local, now.clock).failed(why, _scheduler.rules().retryMoment(now)));
}

void EnforcementLoop::finish()
{
    *_parts.isUnderWay = false;
    _startedAt.reset();
    _inhibitor.reset();
    _lifeLimit->set(std::nullopt);
}

void EnforcementLoop::holdAwake()
{
    if (!_parts.program->preventsSleep())
        return;
    auto inhibitor = platform::SleepInhibitor::create("A backup is running.");
    if (inhibitor)
        _inhibitor = std::move(*inhibitor);
    else
        ZRKLogMessage(LogLevelError, "The computer may fall asleep during the backup: %@",
                      {platform::localizedDescription(inhibitor.error())});
}

// Remembering and showing

void EnforcementLoop::save(Now now)
{
    _state.memory = _scheduler.memory();
    _state.record = _scheduler.record();
    _state.zone = _scheduler.plan().local.zone().name();
    _file.save(_state, now.clock);
}

void EnforcementLoop::notify(Now now)
{
    const auto status = _scheduler.status(now);
    const auto& entries = _state.journal.entries();
    Shown shown{.state = status.state,
                .due = status.due,
                .reasons = status.reasons,
                .memory = _scheduler.memory(),
                .program = _parts.program->name(),
                .zone = _state.zone,
                .record = _scheduler.record(),
                .latest = entries.empty() ? std::nullopt : std::optional(entries.front())};
    if (_shown == shown)
        return;
    _shown = std::move(shown);
    _notifier.changed();
}

platform::Dictionary EnforcementLoop::status()
{
    const Now now = catchUp();
    settle(now);
    return statusReply(_scheduler, now, _state.journal, _parts.program->name(), _parts.program->notes());
}

} // namespace helper
