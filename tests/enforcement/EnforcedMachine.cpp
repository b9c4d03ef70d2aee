#include "tests/enforcement/EnforcedMachine.h"

#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"
#include "protocol/BackupProgram.h"
#include "scheduling/InstantText.h"
#include "tests/platform/ScriptedBackups.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedConditions.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedPowerSources.h"
#include "tests/platform/ScriptedSystemInformation.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

using platform::Dictionary;

namespace {

constexpr scheduling::Instant midnight = 1'767'225'600; // 2026-01-01

std::string description()
{
    const auto bytes = platform::binaryPropertyList(Dictionary{{"Name", "Test Program"},
                                                               {"Executables", platform::Array{"/bin/true"}},
                                                               {"Arguments", platform::Array{"{Identifier}"}},
                                                               {"Warnings", platform::Array{1}}});
    return {bytes->begin(), bytes->end()};
}

} // namespace

EnforcedMachine::EnforcedMachine(ScheduleSettings settings)
{
    scripted::reset();
    scripted::system::setRoot(_root.path());
    scripted::power::setSupportsBattery(true);
    scripted::conditions::setPower({.isKnown = true, .onBattery = false});
    scripted::conditions::setRoute({.isKnown = true, .isWired = true, .interface = "eth0"});
    scripted::conditions::setUse({.isKnown = true, .isPassive = false, .unusedSince = {}});
    _root.write("programs/test.plist", description());
    for (const auto* folder : {"Library", "Library/Preferences"})
        ::mkdir(_root.file(folder).c_str(), 0755);
    _program = std::make_shared<helper::ProgramChoice>(_root.file("Library/Preferences/program.plist"),
                                                       _root.file("programs"));
    chooseProgram(true);
    begin(settings);
}

EnforcedMachine::~EnforcedMachine()
{
    kill();
    scripted::reset();
}

void EnforcedMachine::kill()
{
    if (_queue)
        _queue->sync([this] { _loop.reset(); });
}

void EnforcedMachine::begin(const ScheduleSettings& settings)
{
    _isUnderWay = std::make_shared<std::atomic<bool>>(false);
    _queue = platform::Queue::createSerial("enforcing");
    _queue->sync([&] {
        _loop = std::make_unique<helper::EnforcementLoop>(
            helper::EnforcementParts{.statePath = statePath(),
                                     .record = settings,
                                     .program = _program,
                                     .isMaintenanceAtWork = [this] { return _isMaintained.load(); },
                                     .isUnderWay = _isUnderWay},
            _queue);
    });
    flush();
}

void EnforcedMachine::flush()
{
    for (int turn = 0; turn < 3; ++turn)
        _queue->sync([] { });
}

void EnforcedMachine::apply(const ScheduleSettings& settings)
{
    _queue->sync([&] { _loop->apply(settings); });
}

platform::Result<void> EnforcedMachine::startNow()
{
    platform::Result<void> result;
    _queue->sync([&] { result = _loop->startNow(); });
    return result;
}

Dictionary EnforcedMachine::status()
{
    Dictionary status;
    _queue->sync([&] { status = _loop->status(); });
    return status;
}

void EnforcedMachine::advance(std::chrono::seconds time)
{
    scripted::clock::advance(time);
    flush();
}

void EnforcedMachine::advanceTo(const std::string& time)
{
    const auto number = [&](std::size_t at) { return std::stoi(time.substr(at, 2)); };
    const std::chrono::seconds target(midnight + number(0) * 3600 + number(3) * 60 + number(6));
    const auto now = std::chrono::floor<std::chrono::seconds>(platform::readClocks().sinceEpoch);
    REQUIRE(target >= now);
    advance(target - now);
}

void EnforcedMachine::sleep(std::chrono::seconds time)
{
    scripted::clock::sleep(time);
    flush();
}

void EnforcedMachine::setClockBy(std::chrono::seconds amount)
{
    scripted::clock::setClockBy(amount);
    flush();
}

void EnforcedMachine::endBackup(std::optional<int> status, const std::string& reason)
{
    scripted::backups::end(status, reason);
    flush();
}

void EnforcedMachine::runOtherBackup(bool runs)
{
    scripted::backups::setLockHeld(runs);
    flush();
}

void EnforcedMachine::chooseProgram(bool isChosen, bool preventsSleep)
{
    const Dictionary choice{{BackupProgramKey::Program, "test"}, {BackupProgramKey::PreventSleep, preventsSleep}};
    REQUIRE(_program->choose(isChosen ? choice : Dictionary(), false));
    if (_loop)
        _queue->sync([this] { _loop->happen(); });
}

void EnforcedMachine::setMaintenance(bool isAtWork)
{
    _isMaintained = isAtWork;
    _queue->sync([this] { _loop->happen(); });
}

std::vector<Dictionary> EnforcedMachine::journal()
{
    std::vector<Dictionary> entries;
    const auto now = status();
    for (const auto& entry : *now.arrayForKey("Journal"))
        entries.insert(entries.begin(), *entry.dictionary());
    return entries;
}

std::vector<std::string> EnforcedMachine::told()
{
    const auto entries = journal();
    std::vector<std::string> texts;
    for (; _read < entries.size(); ++_read)
        texts.push_back(*entries[_read].stringForKey("Text"));
    return texts;
}

std::vector<std::string> EnforcedMachine::events()
{
    const auto entries = journal();
    std::vector<std::string> events;
    for (; _read < entries.size(); ++_read) {
        const auto& entry = entries[_read];
        auto event = scheduling::textOfInstant(*helper::instantOf(entry.find("At"))).substr(11, 8) + " "
            + *entry.stringForKey("Event");
        if (entry.contains("Succeeded"))
            event += entry.boolForKey("Succeeded") ? " success" : " failure";
        const auto* const reasons = entry.arrayForKey("Reasons");
        for (const auto& reason : reasons ? *reasons : platform::Array())
            event += " " + *reason.string();
        events.push_back(event);
    }
    return events;
}

std::size_t EnforcedMachine::starts() const
{
    return scripted::backups::started().size();
}

std::optional<Dictionary> EnforcedMachine::stored() const
{
    const auto bytes = platform::readFile(statePath());
    const auto value = bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
    return bytes && value && value->dictionary() ? std::optional(*value->dictionary()) : std::nullopt;
}

ScheduleSettings EnforcedMachine::everyMinutes(int minutes)
{
    return {{ScheduleKey::Backups, true},
            {ScheduleKey::BackupsMode, BackupsModeInterval},
            {BackupsModeInterval, Dictionary{{ScheduleKey::Minutes, minutes}}}};
}

ScheduleSettings EnforcedMachine::daily(const std::vector<std::string>& times, bool asap)
{
    platform::Array entries;
    for (const auto& time : times)
        entries.emplace_back(Dictionary{{ScheduleKey::Hour, std::stoi(time.substr(0, 2))},
                                        {ScheduleKey::Minute, std::stoi(time.substr(3, 2))}});
    return {{ScheduleKey::Backups, true},
            {ScheduleKey::BackupsMode, BackupsModeCalendarIntervals},
            {BackupsModeCalendarIntervals,
             Dictionary{{ScheduleKey::Intervals, std::move(entries)}, {ScheduleKey::ASAP, asap}}}};
}
