#include "helper/AutoUpdatesStore.h"

#include "helper/SettingsValidator.h"

using platform::Dictionary;

AutoUpdatesStore::AutoUpdatesStore(const std::string& path)
    : _file(path, [](const Dictionary& record) { return !SettingsValidator::faultInAutoUpdates(record); })
{
    _enabled = _file.open().value_or(Dictionary()).boolForKey(enabledKey);
}

platform::Result<void> AutoUpdatesStore::setEnabled(bool enabled)
{
    auto written = _file.write({{enabledKey, enabled}});
    if (written)
        _enabled = enabled;
    else if (auto current = _file.read()) // the failure may have come after the file was replaced
        _enabled = current->boolForKey(enabledKey);
    return written;
}
