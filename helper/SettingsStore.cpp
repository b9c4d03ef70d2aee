#include "helper/SettingsStore.h"

#include "helper/ReplyBuilder.h"
#include "helper/SettingsValidator.h"
#include "protocol/Messages.h"
#include "protocol/ScheduleRanges.h"
#include "protocol/ScheduleSettings.h"

#include <utility>

namespace helper {

using platform::Dictionary;

namespace {

// A record on disk may lack values, which read as false, 0 or absent, may be marked as disabled, and may hold keys of a
// later version; all of it is served as it stands.
bool isStoredSettings(const Dictionary& stored)
{
    auto settings = stored;
    if (const auto* disabled = settings.find(ScheduleKey::Disabled); disabled && disabled->isNumber())
        settings.remove(ScheduleKey::Disabled);
    auto fault = SettingsValidator::faultInSettings(settings, SettingsValidator::UnknownKeys::Ignored);
    return !fault || fault->code == BRVErrorMissingValue;
}

} // namespace

SettingsStore::SettingsStore(const std::string& path) : _file(path, isStoredSettings)
{
    auto stored = _file.open();
    _wasApplied = stored.has_value();
    keep(stored ? std::move(*stored) : defaultScheduleSettings());
}

std::shared_ptr<const Dictionary> SettingsStore::settings() const
{
    std::lock_guard guard(_lock);
    return _settings;
}

platform::ServiceDictionary SettingsStore::reply() const
{
    std::lock_guard guard(_lock);
    return _reply;
}

platform::Result<void> SettingsStore::setSettings(const Dictionary& settings)
{
    auto written = _file.write(settings);
    if (written) {
        _wasApplied = true;
        keep(settings);
    } else if (auto current = _file.read()) {
        // The failure may have come after the file was replaced.
        _wasApplied = true;
        keep(std::move(*current));
    }
    return written;
}

void SettingsStore::keep(Dictionary settings)
{
    auto reply = ReplyBuilder::replyWithResult(BRVMessageGetSettings, settings);
    auto kept = std::make_shared<const Dictionary>(std::move(settings));
    std::lock_guard guard(_lock);
    _settings = std::move(kept);
    _reply = std::move(reply);
}

} // namespace helper
