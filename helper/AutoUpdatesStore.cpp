#include "helper/AutoUpdatesStore.h"

#include "helper/SettingsValidator.h"
#include "protocol/Messages.h"

namespace helper {

using platform::Dictionary;

AutoUpdatesStore::AutoUpdatesStore(const std::string& path)
    : _file(path, [](const Dictionary& record) {
          return !SettingsValidator::faultInAutoUpdates(record, SettingsValidator::UnknownKeys::Ignored);
      })
{
    _enabled = _file.open().value_or(Dictionary()).boolForKey(PayloadKey::Enabled);
}

platform::Result<void> AutoUpdatesStore::setEnabled(bool enabled)
{
    auto written = _file.write({{PayloadKey::Enabled, enabled}});
    if (written)
        _enabled = enabled;
    else if (auto current = _file.read()) // the failure may have come after the file was replaced
        _enabled = current->boolForKey(PayloadKey::Enabled);
    return written;
}

} // namespace helper
