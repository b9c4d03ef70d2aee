#include "helper/enforcement/EnforcementState.h"

#include "diagnostics/log/ZRKLog.h"
#include "platform/Folder.h"
#include "platform/Texts.h"

namespace helper {

using platform::Dictionary;
using platform::textForKey;
using scheduling::Instant;

namespace {

constexpr std::int64_t mostFailures = 1'000'000'000;

// False when there is something else than a date.
bool readDate(const Dictionary& dictionary, const char* key, std::optional<Instant>& instant)
{
    instant = instantOf(dictionary.find(key));
    return instant || !dictionary.contains(key);
}

std::optional<scheduling::Memory> memoryIn(const Dictionary& dictionary)
{
    const auto since = instantOf(dictionary.find("Since"));
    const auto settled = instantOf(dictionary.find("Settled"));
    const auto* const timeOfDay = dictionary.find("TimeOfDay");
    const auto failures = dictionary.integerForKey("Failures");
    scheduling::Memory memory;
    const bool hasDates = readDate(dictionary, "LastStart", memory.lastStart)
        && readDate(dictionary, "LastEnd", memory.lastEnd)
        && readDate(dictionary, "LastSucceeded", memory.lastSucceeded) && readDate(dictionary, "Owed", memory.owed);
    if (!since || !settled || !hasDates || failures < 0 || failures > mostFailures)
        return std::nullopt;
    if (timeOfDay) {
        memory.timeOfDay = timeOfDay->integerValue();
        if (!timeOfDay->isNumber() || *memory.timeOfDay < 0 || *memory.timeOfDay >= scheduling::secondsPerDay)
            return std::nullopt;
    }
    memory.since = *since;
    memory.settled = *settled;
    memory.failures = failures;
    return memory;
}

bool isState(const Dictionary& dictionary)
{
    return EnforcementState::inDictionary(dictionary).has_value();
}

} // namespace

Dictionary EnforcementState::dictionary(Instant written) const
{
    Dictionary dictionary{{"Written", dateOf(written)},
                          {"Since", dateOf(memory.since)},
                          {"Settled", dateOf(memory.settled)},
                          {"Failures", memory.failures}};
    scheduling::setDate(dictionary, "LastStart", memory.lastStart);
    scheduling::setDate(dictionary, "LastEnd", memory.lastEnd);
    scheduling::setDate(dictionary, "LastSucceeded", memory.lastSucceeded);
    scheduling::setDate(dictionary, "Owed", memory.owed);
    if (memory.timeOfDay)
        dictionary.set("TimeOfDay", *memory.timeOfDay);
    dictionary.set("Record", record);
    dictionary.set("Zone", zone);
    dictionary.set("Identifier", identifier);
    dictionary.set("Program", program);
    dictionary.set("Durations", platform::Array(durations.begin(), durations.end()));
    dictionary.set("Journal", journal.array());
    return dictionary;
}

std::optional<EnforcementState> EnforcementState::inDictionary(const Dictionary& dictionary)
{
    auto memory = memoryIn(dictionary);
    const auto* const record = dictionary.dictionaryForKey("Record");
    const auto* const entries = dictionary.arrayForKey("Journal");
    auto journal = entries ? Journal::inArray(*entries) : std::nullopt;
    if (!memory || !record || !journal || !instantOf(dictionary.find("Written")))
        return std::nullopt;
    EnforcementState state{.memory = *memory,
                           .record = *record,
                           .zone = textForKey(dictionary, "Zone"),
                           .journal = std::move(*journal),
                           .identifier = textForKey(dictionary, "Identifier"),
                           .program = textForKey(dictionary, "Program"),
                           .durations = {}};
    const auto* const durations = dictionary.arrayForKey("Durations");
    for (const auto& each : durations ? *durations : platform::Array())
        state.durations.push_back(each.integerValue());
    return state;
}

StateFile::StateFile(const std::string& path) : _file(path, isState)
{
    (void)platform::createFolder(platform::parentOf(path));
    if (const auto content = _file.open()) {
        _found = EnforcementState::inDictionary(*content);
        _foundWritten = *instantOf(content->find("Written"));
        _saved = _found;
    }
}

void StateFile::save(const EnforcementState& state, Instant now)
{
    if (_saved == state)
        return;
    const auto written = _file.write(state.dictionary(now));
    _saved = written ? std::optional(state) : std::nullopt;
    if (!written && !_isFailing)
        ZRKLogMessage(LogLevelError, "What was done about backups could not be written down: %@",
                      {platform::localizedDescription(written.error())});
    _isFailing = !written;
}

} // namespace helper
